// Whole-file writes that never leave a partly written file: the bytes go to a temporary file in
// the target's directory, which then replaces the target in one rename.
#pragma once

#include <string>
#include <string_view>

namespace wavex {

// Writes `bytes` as the whole content of `path`. Returns "" when done, else the reason, worded
// "Cannot write 'PATH': REASON" with the system's reason ("Permission denied"). A new file gets the
// usual permissions (0666 less the umask); a replaced file keeps its own.
std::string writeFileAtomically(const std::string& path, std::string_view bytes);

// "Cannot VERB 'PATH': REASON" with the system's text for errno `error`.
std::string systemFailure(std::string_view verb, std::string_view path, int error);

}  // namespace wavex
