#pragma once

#include <filesystem>

/// A folder of its own for a benchmark's files, gone with the object.
class TempFolder {
public:
    explicit TempFolder(const wchar_t* name) : path_(std::filesystem::temp_directory_path() / name) {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    std::wstring File(const wchar_t* name) const { return (path_ / name).wstring(); }

private:
    const std::filesystem::path path_;
};
