// Paths as text: joined, split and normalised without touching the file system. '/' is the only
// separator; runs of it count as one, and a trailing one does not make an empty last part. Parts
// are compared as the file system compares names (pathEquals in text.hpp).
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace wavex {

// `next` appended to `base` with one separator; an absolute `next` replaces `base`, an empty one
// adds nothing.
std::string pathJoin(std::string_view base, std::string_view next);
// The path without its last part: "a/b/c" → "a/b", "a" → "", "/a" → "/", "/" → "/".
std::string pathParent(std::string_view path);
// The last part: "a/b.txt" → "b.txt", "a/b/" → "b", "/" → "".
std::string pathFileName(std::string_view path);
// The last part's extension from its last '.', with the dot ("b.tar.gz" → ".gz"); none for names
// that have no dot past their first character (".profile", "a.").
std::string pathExtension(std::string_view path);
// The last part without its extension.
std::string pathStem(std::string_view path);
// "." parts and doubled separators removed, "x/.." folded away; ".." stays at the start of a
// relative path and goes at the root ("/.." is "/"). A path that folds to nothing is ".".
std::string pathNormalize(std::string_view path);
// The normalised path, made absolute against `cwd` when it is relative.
std::string pathAbsolute(std::string_view path, std::string_view cwd);
// The path of `path` seen from the directory `base`, both absolute: "../x/y", or "." for base
// itself.
std::string pathRelative(std::string_view path, std::string_view base);

}  // namespace wavex
