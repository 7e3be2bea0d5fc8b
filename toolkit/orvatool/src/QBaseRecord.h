#pragma once

#include <orvatool/QBaseDb.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The fields of a record in one piece, as they are stored: in ascending order of their numbers, for each its number
/// and the length of its text (32 bits each), then the text. Texts are what orvaspace::ToUtf8 makes, which keeps every
/// UTF-16 unit.
class PackedFields {
public:
    /// The text of a field; valid until the fields change.
    std::optional<std::string_view> Find(int field) const;
    /// Sets a field, or removes it. `field` is 0 or more.
    void Set(int field, std::optional<std::string_view> text);

    std::span<const std::byte> Bytes() const { return std::as_bytes(std::span(bytes_)); }
    /// Takes over stored fields; false, with no field, when they are damaged.
    bool Assign(std::span<const std::byte> bytes);

private:
    struct Place {
        std::size_t start = 0;
        std::size_t text = 0;
        std::size_t end = 0;
        int field = 0;
    };
    Place At(std::size_t start) const;
    Place FirstFrom(int field) const;
    bool IsWhole() const;

    std::string bytes_;
};

class QBaseDb::Rec {
public:
    std::string type;
    std::string objId;
    PackedFields fields;
};
