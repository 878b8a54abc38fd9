// Files, paths and lock files: the ground a script that post-processes a directory of results
// stands on.
//
// Functions that read or change files take the first element of their path arguments; an empty
// path or one holding a NUL byte is refused with a message. Functions that change files return 1
// (or a count) or fail with the system's reason: "Cannot delete 'x': Permission denied". Files are
// never left partly written: WriteFile and CopyFile write a temporary file beside the target and
// rename it over the target.
//
// The Path functions work on text only (support/paths.hpp), element by element, and compare names
// as PathEqual does.
//
// Lock files: CreateLockFile takes an exclusive lock (flock) on the file, creating it and writing
// this process's id into it, so that another process running wavex sees it held. The locks are
// released when the command-line mode ends ("ExitCli"); a lock made with autoDelete is released
// and its file deleted at the end of the command line that made it ("PostCli").
#include "functions/host_args.hpp"
#include "support/atomic_file.hpp"
#include "support/paths.hpp"
#include "support/text.hpp"
#include "wavex/events.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <map>

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace wavex {
namespace {

using host::fail;
using host::pathArg;
using host::putReal;
using host::putText;
using host::putTexts;

FUNC_ERROR failWithErrno(MessageHandler& messages, std::string_view verb, const std::string& path, int error = errno) {
    return fail(messages, systemFailure(verb, path, error));
}

std::string currentDirectory() {
    std::error_code ec;
    std::string cwd = std::filesystem::current_path(ec).string();
    return ec ? std::string("/") : cwd;
}

// Where a file copied or moved to `to` lands: inside `to` when it is a directory.
std::string destination(const std::string& from, const std::string& to) {
    struct stat st;
    if (stat(to.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return pathJoin(to, pathFileName(from));
    return to;
}

// ---- Questions about files ---------------------------------------------------------------------

// FileExists / DirectoryExists: 1 when the path names a file (anything but a directory) or a
// directory, else 0.
template <bool directory>
FUNC_ERROR exists(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    struct stat st;
    bool found = stat(path->c_str(), &st) == 0 && S_ISDIR(st.st_mode) == directory;
    return putReal(result, found ? 1 : 0);
}

// FileSize / FileTime: bytes, and the modification time in seconds since 1970 (UTC).
template <bool time>
FUNC_ERROR fileStat(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    struct stat st;
    if (stat(path->c_str(), &st) != 0) return failWithErrno(*messages, "read", *path);
    if (S_ISDIR(st.st_mode)) return failWithErrno(*messages, "read", *path, EISDIR);
    if (time) return putReal(result, static_cast<double>(st.st_mtim.tv_sec) + st.st_mtim.tv_nsec * 1e-9, units::Time);
    return putReal(result, static_cast<double>(st.st_size));
}

// ListFiles(dir [, pattern [, recursive]]): the files (not directories) in dir whose names match
// the glob pattern (default "*"; a leading '.' must be matched by a '.'), as paths relative to dir,
// sorted byte by byte. Recursive listing descends into subdirectories (not into symbolic links to
// them) and matches the pattern against file names.
void listInto(const std::string& dir, const std::string& prefix, const char* pattern, bool recursive,
              std::vector<std::string>& out, int depth) {
    std::unique_ptr<DIR, int (*)(DIR*)> d(opendir(dir.c_str()), &closedir);
    if (!d) return;
    while (dirent* e = readdir(d.get())) {
        std::string_view name = e->d_name;
        if (name == "." || name == "..") continue;
        unsigned char type = e->d_type;
        if (type == DT_UNKNOWN || type == DT_LNK) {
            struct stat st;
            std::string full = dir + "/" + e->d_name;
            if (stat(full.c_str(), &st) != 0) continue;
            type = S_ISDIR(st.st_mode) ? (e->d_type == DT_LNK ? DT_LNK : DT_DIR) : DT_REG;
        }
        if (type == DT_DIR) {
            if (recursive && depth < 64)
                listInto(dir + "/" + e->d_name, prefix + e->d_name + "/", pattern, true, out, depth + 1);
        } else if (type != DT_LNK && fnmatch(pattern, e->d_name, FNM_PERIOD) == 0) {
            out.push_back(prefix + e->d_name);
        }
    }
}

FUNC_ERROR listFiles(WAVEX_HANDLER_PARAMS) {
    auto dir = pathArg(args, 0, info, *messages);
    if (!dir) return FUNC_FAILED;
    std::string pattern = host::textArg(args, 1, "*");
    if (pattern.find('\0') != std::string::npos) return fail(*messages, "A file pattern cannot hold a NUL character");
    struct stat st;
    if (stat(dir->c_str(), &st) != 0) return failWithErrno(*messages, "list", *dir);
    if (!S_ISDIR(st.st_mode)) return failWithErrno(*messages, "list", *dir, ENOTDIR);
    if (access(dir->c_str(), R_OK | X_OK) != 0) return failWithErrno(*messages, "list", *dir);
    std::vector<std::string> names;
    listInto(*dir, "", pattern.c_str(), host::flagArg(args, 2, false), names, 0);
    std::sort(names.begin(), names.end());
    return putTexts(result, names);
}

// ---- Changing files ----------------------------------------------------------------------------

// MakeDirectory(path): makes the directory and any parents it lacks; 1 when made, 0 when it was
// there already.
FUNC_ERROR makeDirectory(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::error_code ec;
    bool made = std::filesystem::create_directories(*path, ec);
    if (ec) return failWithErrno(*messages, "make directory", *path, ec.value());
    return putReal(result, made ? 1 : 0);
}

// DeleteFile(path): deletes a file (not a directory); 1.
FUNC_ERROR deleteFile(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    if (unlink(path->c_str()) != 0) return failWithErrno(*messages, "delete", *path);
    return putReal(result, 1);
}

// CopyFile(from, to): a copy of the file at `to` (inside it when it is a directory), replacing a
// file there; 1.
FUNC_ERROR copyFile(WAVEX_HANDLER_PARAMS) {
    auto from = pathArg(args, 0, info, *messages), to = pathArg(args, 1, info, *messages);
    if (!from || !to) return FUNC_FAILED;
    struct stat st;
    if (stat(from->c_str(), &st) != 0) return failWithErrno(*messages, "copy", *from);
    if (S_ISDIR(st.st_mode)) return failWithErrno(*messages, "copy", *from, EISDIR);
    std::string bytes;
    if (std::string why = readWholeFile(*from, bytes); !why.empty()) return fail(*messages, why);
    if (std::string why = writeFileAtomically(destination(*from, *to), bytes); !why.empty())
        return fail(*messages, why);
    return putReal(result, 1);
}

// MoveFile(from, to): renames the file or directory (into `to` when it is a directory); across
// file systems a file is copied and the original deleted. 1.
FUNC_ERROR moveFile(WAVEX_HANDLER_PARAMS) {
    auto from = pathArg(args, 0, info, *messages), to = pathArg(args, 1, info, *messages);
    if (!from || !to) return FUNC_FAILED;
    std::string target = destination(*from, *to);
    if (rename(from->c_str(), target.c_str()) == 0) return putReal(result, 1);
    if (errno != EXDEV) return failWithErrno(*messages, "move", *from);
    std::string bytes;
    if (std::string why = readWholeFile(*from, bytes); !why.empty()) return fail(*messages, why);
    if (std::string why = writeFileAtomically(target, bytes); !why.empty()) return fail(*messages, why);
    if (unlink(from->c_str()) != 0) return failWithErrno(*messages, "delete", *from);
    return putReal(result, 1);
}

// WriteFile(path, lines [, append]): each element of lines followed by "\n" as the file's content,
// or after its present content with append; the number of lines written.
FUNC_ERROR writeFile(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::string bytes;
    if (host::flagArg(args, 2, false)) {
        struct stat st;
        if (stat(path->c_str(), &st) == 0)
            if (std::string why = readWholeFile(*path, bytes); !why.empty()) return fail(*messages, why);
    }
    int64_t n = args.length(1);
    for (int64_t i = 0; i < n; ++i) bytes.append(args.string(1, static_cast<size_t>(i))).push_back('\n');
    if (std::string why = writeFileAtomically(*path, bytes); !why.empty()) return fail(*messages, why);
    return putReal(result, static_cast<double>(n));
}

// TempFileName([prefix]): makes a new empty file PREFIXxxxxxx (default prefix "wavex") in the
// temporary directory ($TMPDIR, else /tmp) and gives its path. The script deletes it.
FUNC_ERROR tempFileName(WAVEX_HANDLER_PARAMS) {
    std::string prefix = host::textArg(args, 0, "wavex");
    if (prefix.find_first_of(std::string_view("/\0", 2)) != std::string::npos)
        return fail(*messages, "A temporary file's prefix cannot hold '/' or a NUL character");
    const char* tmp = std::getenv("TMPDIR");
    std::string path = pathJoin(tmp && *tmp ? tmp : "/tmp", prefix + "XXXXXX");
    int fd = mkstemp(path.data());
    if (fd < 0) return failWithErrno(*messages, "make a temporary file like", path);
    close(fd);
    return putText(result, path);
}

// ---- The current directory ---------------------------------------------------------------------

FUNC_ERROR currentDirectoryFn(WAVEX_HANDLER_PARAMS) { return putText(result, currentDirectory()); }

// ChangeDirectory(path): makes path the current directory; gives the one it was before.
FUNC_ERROR changeDirectory(WAVEX_HANDLER_PARAMS) {
    auto path = pathArg(args, 0, info, *messages);
    if (!path) return FUNC_FAILED;
    std::string before = currentDirectory();
    if (chdir(path->c_str()) != 0) return failWithErrno(*messages, "change to directory", *path);
    return putText(result, before);
}

// ---- Paths as text -----------------------------------------------------------------------------

// One string per element of argument 0, each made by `op`.
template <std::string (*op)(std::string_view)>
FUNC_ERROR eachPath(WAVEX_HANDLER_PARAMS) {
    std::vector<std::string> out;
    out.reserve(static_cast<size_t>(args.length(0)));
    for (int64_t i = 0; i < args.length(0); ++i) out.push_back(op(args.string(0, static_cast<size_t>(i))));
    return putTexts(result, out);
}

std::string absoluteHere(std::string_view path) { return pathAbsolute(path, currentDirectory()); }

// PathJoin(a, b, ...): element i joins element i of every argument (a shorter argument repeats
// its last element; an empty one is skipped).
FUNC_ERROR pathJoinFn(WAVEX_HANDLER_PARAMS) {
    int64_t n = 0;
    for (int k = 0; k < args.count(); ++k) n = std::max(n, args.length(k));
    std::vector<std::string> out(static_cast<size_t>(n));
    for (int64_t i = 0; i < n; ++i)
        for (int k = 0; k < args.count(); ++k)
            if (int64_t len = args.length(k); len > 0)
                out[i] = pathJoin(out[i], args.string(k, static_cast<size_t>(std::min(i, len - 1))));
    return putTexts(result, out);
}

// PathRelative(path [, base]): each path seen from base (default the current directory), both
// made absolute first.
FUNC_ERROR pathRelativeFn(WAVEX_HANDLER_PARAMS) {
    std::string cwd = currentDirectory();
    std::string base = pathAbsolute(host::textArg(args, 1, cwd), cwd);
    std::vector<std::string> out;
    for (int64_t i = 0; i < args.length(0); ++i)
        out.push_back(pathRelative(pathAbsolute(args.string(0, static_cast<size_t>(i)), cwd), base));
    return putTexts(result, out);
}

// ---- Lock files --------------------------------------------------------------------------------

struct Lock {
    int fd;
    bool autoDelete;
};

// The locks this process holds, by absolute path.
std::map<std::string, Lock>& locks() {
    static std::map<std::string, Lock> held;
    return held;
}

void release(std::map<std::string, Lock>::iterator it, bool removeFile) {
    if (removeFile) unlink(it->first.c_str());
    close(it->second.fd);  // closing the only descriptor releases the flock
    locks().erase(it);
}

// The process id written in a lock file, or "" when it cannot be read.
std::string holderOf(const std::string& path) {
    std::string text;
    readWholeFile(path, text, 64);
    std::string_view id = trim(text);
    return id.empty() || id.find_first_not_of("0123456789") != std::string_view::npos ? "" : std::string(id);
}

// CreateLockFile(path [, autoDelete]): 1 when this process holds the lock (also when it held it
// already); 0 with a warning when another process holds it.
FUNC_ERROR createLockFile(WAVEX_HANDLER_PARAMS) {
    auto given = pathArg(args, 0, info, *messages);
    if (!given) return FUNC_FAILED;
    std::string path = absoluteHere(*given);
    bool autoDelete = host::flagArg(args, 1, false);
    if (auto it = locks().find(path); it != locks().end()) {
        it->second.autoDelete = autoDelete;
        return putReal(result, 1);
    }
    // A holder that unlocks deletes the file: when the file we locked is no longer the one at the
    // path, try again on the new one.
    for (int attempt = 0; attempt < 8; ++attempt) {
        int fd = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) return failWithErrno(*messages, "lock", *given);
        if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
            int error = errno;
            close(fd);
            if (error != EWOULDBLOCK) return failWithErrno(*messages, "lock", *given, error);
            std::string holder = holderOf(path);
            messages->error("Cannot lock '%s': it is locked by %s", *given,
                            holder.empty() ? std::string("another process") : "process " + holder);
            return putReal(result, 0);
        }
        struct stat locked, now;
        if (fstat(fd, &locked) == 0 && stat(path.c_str(), &now) == 0 && locked.st_ino == now.st_ino &&
            locked.st_dev == now.st_dev) {
            std::string id = std::to_string(getpid()) + "\n";
            if (ftruncate(fd, 0) != 0 || pwrite(fd, id.data(), id.size(), 0) != static_cast<ssize_t>(id.size())) {
                int error = errno;
                close(fd);
                return failWithErrno(*messages, "lock", *given, error);
            }
            locks().emplace(path, Lock{fd, autoDelete});
            return putReal(result, 1);
        }
        close(fd);
    }
    return fail(*messages, "Cannot lock '" + *given + "': it keeps being replaced");
}

// UnlockFile(path): releases this process's lock and deletes the lock file; 1, or 0 when this
// process did not hold it.
FUNC_ERROR unlockFile(WAVEX_HANDLER_PARAMS) {
    auto given = pathArg(args, 0, info, *messages);
    if (!given) return FUNC_FAILED;
    auto it = locks().find(absoluteHere(*given));
    if (it == locks().end()) return putReal(result, 0);
    release(it, true);
    return putReal(result, 1);
}

void unlockFiles(void*) {
    while (!locks().empty()) release(locks().begin(), locks().begin()->second.autoDelete);
}

void autoDeleteLockFile(void*) {
    for (auto it = locks().begin(); it != locks().end();) {
        auto next = std::next(it);
        if (it->second.autoDelete) release(it, true);
        it = next;
    }
}

const AutoFunc unlockAtExit("ExitCli", unlockFiles, "unlockFiles");
const AutoFunc deleteAfterLine("PostCli", autoDeleteLockFile, "autoDeleteLockFile");

// ---- Registration ------------------------------------------------------------------------------

constexpr FuncInfo kFunctions[] = {
    FuncInfo("ChangeDirectory", {arg::String}, 1, changeDirectory,
             {.signature = "ChangeDirectory(path)",
              .summary = "Makes path the current directory.",
              .returns = "the directory that was current before, a string",
              .notes = "Relative paths of later calls start from the new directory.",
              .example = "MakeDirectory('sub'); before = ChangeDirectory('sub'); PathFileName(CurrentDirectory()); "
                         "back = ChangeDirectory(before)"}).outsideSafeMode(),
    FuncInfo("CopyFile", {arg::String, arg::String}, 2, copyFile,
             {.signature = "CopyFile(from, to)",
              .summary = "Copies a file, replacing the target.",
              .returns = "1",
              .notes = "A directory as `to` receives the copy under the file's own name. The copy is written to "
                       "a temporary file beside the target and renamed over it, so the target is never half "
                       "written. Fails with the system's reason (\"Cannot copy 'x': No such file or directory\").",
              .example = "WriteFile('a.txt', ['x']); CopyFile('a.txt', 'b.txt'); ReadFile('b.txt')"}).outsideSafeMode(),
    FuncInfo("CreateLockFile", {arg::String, arg::Real}, 1, createLockFile,
             {.signature = "CreateLockFile(path [, autoDelete])",
              .summary = "Takes an exclusive lock on a file that other processes running wavex see.",
              .returns = "1 when this process holds the lock (also when it held it already); 0 with a warning "
                         "naming the holder's process id when another process holds it",
              .notes = "The file is made when missing and holds the process id. The locks are released when the "
                       "program leaves; with autoDelete non-zero the lock is released and the file deleted at "
                       "the end of the command line.",
              .example = "CreateLockFile('job.lock', 1); FileExists('job.lock')"}).outsideSafeMode(),
    {"CurrentDirectory", {}, 0, currentDirectoryFn,
     {.signature = "CurrentDirectory()",
      .summary = "The current directory.",
      .returns = "its absolute path, a string",
      .example = "WriteFile('a.txt', ['x']); FileExists(PathJoin(CurrentDirectory(), 'a.txt'))"}},
    FuncInfo("DeleteFile", {arg::String}, 1, deleteFile,
             {.signature = "DeleteFile(path)",
              .summary = "Deletes a file.",
              .returns = "1",
              .notes = "A directory is not deleted (\"Cannot delete 'd': Is a directory\"); other failures give "
                       "the system's reason.",
              .example = "WriteFile('a.txt', ['x']); DeleteFile('a.txt'); FileExists('a.txt')"}).outsideSafeMode(),
    {"DirectoryExists", {arg::String}, 1, exists<true>,
     {.signature = "DirectoryExists(path)",
      .summary = "Whether a directory exists.",
      .returns = "1 or 0",
      .example = "MakeDirectory('d'); [DirectoryExists('d'), DirectoryExists('none')]"}},
    {"FileExists", {arg::String}, 1, exists<false>,
     {.signature = "FileExists(path)",
      .summary = "Whether a file (anything but a directory) exists.",
      .returns = "1 or 0",
      .example = "WriteFile('a.txt', ['x']); [FileExists('a.txt'), FileExists('b.txt')]"}},
    {"FileSize", {arg::String}, 1, fileStat<false>,
     {.signature = "FileSize(path)",
      .summary = "The size of a file.",
      .returns = "bytes, a number",
      .notes = "A directory or a missing file fails with the system's reason.",
      .example = "WriteFile('a.txt', ['12345']); FileSize('a.txt')"}},
    {"FileTime", {arg::String}, 1, fileStat<true>,
     {.signature = "FileTime(path)",
      .summary = "The time a file was last changed.",
      .returns = "seconds since 1970-01-01 UTC with their fraction, in s: the time value "
                 "ConvertUnixTimeToIso formats",
      .example = "WriteFile('a.txt', ['x']); abs(FileTime('a.txt') - Now()) < 60"}},
    {"ListFiles", {arg::String, arg::String, arg::Real}, 1, listFiles,
     {.signature = "ListFiles(dir [, pattern [, recursive]])",
      .summary = "The files in a directory whose names match a pattern.",
      .returns = "their paths relative to dir, sorted byte by byte, strings",
      .notes = "pattern is a glob (*, ?, [a-z]), default \"*\"; a name starting with '.' is matched only "
               "by a pattern starting with '.'. Directories are not listed; recursive non-zero descends "
               "into subdirectories (not through symbolic links) and gives paths like \"sub/x.csv\".",
      .example = "WriteFile('run1.csv', ['1']); WriteFile('run2.csv', ['2']); WriteFile('notes.txt', "
                 "['n']); ListFiles('.', '*.csv')"}},
    FuncInfo("MakeDirectory", {arg::String}, 1, makeDirectory,
             {.signature = "MakeDirectory(path)",
              .summary = "Makes a directory and the parents it lacks.",
              .returns = "1 when made, 0 when it was there already",
              .example = "[MakeDirectory('out/plots'), MakeDirectory('out')]"}).outsideSafeMode(),
    FuncInfo("MoveFile", {arg::String, arg::String}, 2, moveFile,
             {.signature = "MoveFile(from, to)",
              .summary = "Moves or renames a file or directory.",
              .returns = "1",
              .notes = "A directory as `to` receives it under its own name; across file systems a file is copied "
                       "and the original deleted.",
              .example = "WriteFile('a.txt', ['x']); MoveFile('a.txt', 'b.txt'); [FileExists('a.txt'), "
                         "FileExists('b.txt')]"}).outsideSafeMode(),
    {"PathAbsolute", {arg::String}, 1, eachPath<absoluteHere>,
     {.signature = "PathAbsolute(paths)",
      .summary = "Each path made absolute against the current directory and normalised.",
      .returns = "strings",
      .notes = "Text only: symbolic links are not followed.",
      .example = "PathAbsolute('a/../b') == PathJoin(CurrentDirectory(), 'b')"}},
    {"PathExtension", {arg::String}, 1, eachPath<pathExtension>,
     {.signature = "PathExtension(paths)",
      .summary = "The extension of each path's last part, with its dot.",
      .returns = "strings; \"\" for none",
      .notes = "A name whose only dot is its first character (\".profile\") has none.",
      .example = "PathExtension(['out.csv', 'wave.tar.gz', '.profile'])"}},
    {"PathFileName", {arg::String}, 1, eachPath<pathFileName>,
     {.signature = "PathFileName(paths)",
      .summary = "The last part of each path.",
      .returns = "strings",
      .notes = "A trailing '/' is ignored (\"a/b/\" gives \"b\"); \"/\" gives \"\".",
      .example = "PathFileName(['data/run1/out.csv', 'data/run1/'])"}},
    {"PathJoin", {arg::String.upTo(8)}, 1, pathJoinFn,
     {.signature = "PathJoin(part1, part2 [, ...])",
      .summary = "Parts joined with '/'.",
      .returns = "strings: element i joins element i of every argument",
      .notes = "Up to 8 parts; an argument shorter than the others repeats its last element, an empty "
               "part adds nothing, an absolute part starts the path afresh.",
      .example = "PathJoin('results', ['run1', 'run2'], 'out.csv')"}},
    {"PathNormalize", {arg::String}, 1, eachPath<pathNormalize>,
     {.signature = "PathNormalize(paths)",
      .summary = "Each path with \".\", doubled separators and \"x/..\" folded away.",
      .returns = "strings",
      .notes = "\"..\" stays at the start of a relative path and goes at the root; a path that folds to "
               "nothing is \".\". Text only.",
      .example = "PathNormalize('data/./run1//../run2/out.csv')"}},
    {"PathParent", {arg::String}, 1, eachPath<pathParent>,
     {.signature = "PathParent(paths)",
      .summary = "Each path without its last part.",
      .returns = "strings",
      .notes = "\"a\" gives \"\", \"/a\" and \"/\" give \"/\"; a trailing '/' is ignored.",
      .example = "PathParent(['data/run1/out.csv', 'data/run1/', '/'])"}},
    {"PathRelative", {arg::String, arg::String}, 1, pathRelativeFn,
     {.signature = "PathRelative(paths [, base])",
      .summary = "Each path as seen from the directory base.",
      .returns = "strings such as \"../run1/out.csv\", \".\" for base itself",
      .notes = "base defaults to the current directory; both are made absolute first. Parts are compared "
               "as PathEqual compares names.",
      .example = "PathRelative('/data/run1/out.csv', '/data/run2')"}},
    {"PathStem", {arg::String}, 1, eachPath<pathStem>,
     {.signature = "PathStem(paths)",
      .summary = "The last part of each path without its extension.",
      .returns = "strings",
      .example = "PathStem(['out.csv', 'wave.tar.gz', '.profile'])"}},
    FuncInfo("TempFileName", {arg::String}, 0, tempFileName,
             {.signature = "TempFileName([prefix])",
              .summary = "Makes a new empty file in the temporary directory.",
              .returns = "its path, a string",
              .notes = "The name is prefix (default \"wavex\") and six random characters, in $TMPDIR or /tmp; the "
                       "script deletes the file.",
              .example = "t = TempFileName('run'); [FileExists(t), FileSize(t), DeleteFile(t)]"}).outsideSafeMode(),
    FuncInfo("UnlockFile", {arg::String}, 1, unlockFile,
             {.signature = "UnlockFile(path)",
              .summary = "Releases a lock this process took with CreateLockFile and deletes the lock file.",
              .returns = "1, or 0 when this process did not hold it",
              .example = "CreateLockFile('job.lock'); UnlockFile('job.lock'); FileExists('job.lock')"}).outsideSafeMode(),
    FuncInfo("WriteFile", {arg::String, arg::String, arg::Real}, 2, writeFile,
             {.signature = "WriteFile(path, lines [, append])",
              .summary = "Writes lines to a file, each followed by a line end.",
              .returns = "the number of lines written",
              .notes = "append non-zero keeps the file's content and adds after it. Written to a temporary file "
                       "and renamed over the target, so a failure never leaves a partly written file. Numbers "
                       "are written as their text.",
              .example = "WriteFile('log.txt', ['first', 'second']); WriteFile('log.txt', ['third'], 1); "
                         "ReadFile('log.txt')"}).outsideSafeMode(),
};

const FuncFamily family(kFunctions);

}  // namespace
}  // namespace wavex
