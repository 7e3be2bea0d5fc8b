#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// An empty folder of the running test, gone with the object. No code page holds its name entirely.
class TestFolder {
public:
    TestFolder() { Clear(); }
    ~TestFolder() { Remove(); }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    void Clear() const {
        Remove();
        std::filesystem::create_directories(path_);
    }
    const std::filesystem::path& Path() const { return path_; }
    std::wstring File(const wchar_t* name) const { return (path_ / name).wstring(); }

private:
    void Remove() const {
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(path_, ignored))
            SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path path_ = std::filesystem::temp_directory_path() /
                                        (std::filesystem::path(L"P\u00e4\u00e4piirustus \u0434\u043e\u043c ") +=
                                         testing::UnitTest::GetInstance()->current_test_info()->test_suite_name());
};

inline std::string BytesOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}
