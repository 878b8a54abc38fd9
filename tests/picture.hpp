// PNG pictures read back as RGB pixels, for the tests of what is drawn.
#pragma once

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace wavex::test {

struct Rgb {
    int r, g, b;
};
struct Picture {
    unsigned width = 0, height = 0;
    std::vector<unsigned char> rgb;

    bool near(unsigned x, unsigned y, Rgb c) const {
        const unsigned char* p = &rgb[3 * (static_cast<size_t>(y) * width + x)];
        return std::abs(p[0] - c.r) + std::abs(p[1] - c.g) + std::abs(p[2] - c.b) < 40;
    }
    // The pixels of one colour, (column, row), in columns x0 to x1 (to leave out a legend).
    std::vector<std::pair<unsigned, unsigned>> pixels(Rgb c, unsigned x0 = 0, unsigned x1 = ~0u) const {
        std::vector<std::pair<unsigned, unsigned>> found;
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = x0; x < std::min(x1, width); ++x)
                if (near(x, y, c)) found.emplace_back(x, y);
        return found;
    }
};

inline std::optional<Picture> readPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) return std::nullopt;
    image.format = PNG_FORMAT_RGB;
    Picture p;
    p.width = image.width;
    p.height = image.height;
    p.rgb.resize(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, p.rgb.data(), 0, nullptr)) return std::nullopt;
    return p;
}

}  // namespace wavex::test
