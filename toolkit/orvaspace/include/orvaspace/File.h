#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orvaspace {

/// What of a file operation failed.
enum class FileStep { Open, Read, Create, Write, Replace };

/// Makes the file at `path` hold exactly `bytes`: they are written to a temporary beside it, which takes the file's
/// place when it is on the disk. 0, or the system's error code; the file is then as it was, or still not there, and
/// `failed`, where given, says what failed.
std::uint32_t WriteWholeFile(const wchar_t* path, std::string_view bytes, FileStep* failed = nullptr);

/// Reads a whole file of at most `limit` bytes. 0, or the system's error code (ERROR_FILE_TOO_LARGE beyond the limit);
/// `bytes` is then as it was, and `failed`, where given, says what failed.
std::uint32_t ReadWholeFile(const wchar_t* path, std::size_t limit, std::string& bytes, FileStep* failed = nullptr);

}  // namespace orvaspace
