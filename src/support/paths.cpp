#include "support/paths.hpp"

#include "support/text.hpp"

namespace wavex {
namespace {

struct Parts {
    bool absolute = false;
    std::vector<std::string_view> names;
};

Parts split(std::string_view path) {
    Parts p;
    p.absolute = !path.empty() && path.front() == '/';
    while (!path.empty()) {
        size_t slash = path.find('/');
        std::string_view name = path.substr(0, slash);
        if (!name.empty()) p.names.push_back(name);
        path.remove_prefix(slash == std::string_view::npos ? path.size() : slash + 1);
    }
    return p;
}

std::string joined(const Parts& p, size_t count) {
    std::string s = p.absolute ? "/" : "";
    for (size_t i = 0; i < count; ++i) {
        if (i) s += '/';
        s.append(p.names[i]);
    }
    return s;
}

Parts normalized(std::string_view path) {
    Parts p = split(path), out;
    out.absolute = p.absolute;
    for (std::string_view name : p.names) {
        if (name == ".") continue;
        if (name == "..") {
            if (!out.names.empty() && out.names.back() != "..") out.names.pop_back();
            else if (!out.absolute) out.names.push_back(name);
            continue;
        }
        out.names.push_back(name);
    }
    return out;
}

// Where the extension of a file name starts, or npos.
size_t extensionStart(std::string_view name) {
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return std::string_view::npos;
    return dot;
}

}  // namespace

std::string pathJoin(std::string_view base, std::string_view next) {
    if (next.empty()) return std::string(base);
    if (base.empty() || next.front() == '/') return std::string(next);
    std::string s(base);
    if (s.back() != '/') s += '/';
    return s.append(next);
}

std::string pathParent(std::string_view path) {
    Parts p = split(path);
    if (p.names.empty()) return p.absolute ? "/" : "";
    return joined(p, p.names.size() - 1);
}

std::string pathFileName(std::string_view path) {
    Parts p = split(path);
    return p.names.empty() ? "" : std::string(p.names.back());
}

std::string pathExtension(std::string_view path) {
    std::string name = pathFileName(path);
    size_t dot = extensionStart(name);
    return dot == std::string::npos ? "" : name.substr(dot);
}

std::string pathStem(std::string_view path) {
    std::string name = pathFileName(path);
    size_t dot = extensionStart(name);
    return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string pathNormalize(std::string_view path) {
    if (path.empty()) return "";
    Parts p = normalized(path);
    std::string s = joined(p, p.names.size());
    return s.empty() ? "." : s;
}

std::string pathAbsolute(std::string_view path, std::string_view cwd) {
    if (!path.empty() && path.front() == '/') return pathNormalize(path);
    return pathNormalize(pathJoin(cwd, path));
}

std::string pathRelative(std::string_view path, std::string_view base) {
    Parts to = normalized(path), from = normalized(base);
    size_t common = 0;
    while (common < to.names.size() && common < from.names.size() && pathEquals(to.names[common], from.names[common]))
        ++common;
    std::string s;
    for (size_t i = common; i < from.names.size(); ++i) s += s.empty() ? ".." : "/..";
    for (size_t i = common; i < to.names.size(); ++i) {
        if (!s.empty()) s += '/';
        s.append(to.names[i]);
    }
    return s.empty() ? "." : s;
}

}  // namespace wavex
