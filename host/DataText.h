#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/ProjectGenerator.h"
#include "host/Result.h"

namespace ochost {

/// A record of a data file; see host/data/README.md for the format. What does not follow it is thrown as a Failure
/// that names file and line.
class DataRecord {
public:
    DataRecord(std::string_view file, int line, std::string_view text);

    size_t Size() const { return fields_.size(); }

    std::wstring Text(size_t field) const;
    int Integer(size_t field) const;
    double Real(size_t field) const;
    std::uint32_t Colour(size_t field) const;
    /// The values between separators; none when the field is empty.
    std::vector<std::wstring> List(size_t field, char separator = '|') const;

    [[noreturn]] void Refuse(const std::wstring& what) const;

private:
    std::string_view file_;
    int line_;
    std::vector<std::string_view> fields_;
};

/// All records of a file, each with that many fields. The records refer to the text of the source.
std::vector<DataRecord> ReadData(const TextSource& texts, std::string_view file, size_t fields);

}  // namespace ochost
