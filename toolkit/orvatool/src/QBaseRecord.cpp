#include "QBaseRecord.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// What stands before each text.
struct Head {
    std::int32_t field;
    std::uint32_t size;
};
static_assert(std::endian::native == std::endian::little, "the file's numbers");

}  // namespace

std::optional<std::string_view> PackedFields::Find(int field) const {
    const Place place = FirstFrom(field);
    if (field < 0 || place.field != field) return std::nullopt;
    return std::string_view(bytes_).substr(place.text, place.end - place.text);
}

void PackedFields::Set(int field, std::optional<std::string_view> text) {
    const Place old = FirstFrom(field);
    const std::size_t oldSize = old.field == field ? old.end - old.start : 0;
    std::string packed;
    if (text) {
        if (text->size() > std::numeric_limits<std::uint32_t>::max()) throw std::length_error("a field's text");
        const Head head{field, static_cast<std::uint32_t>(text->size())};
        packed.reserve(sizeof head + text->size());
        packed.append(reinterpret_cast<const char*>(&head), sizeof head).append(*text);
    }
    bytes_.replace(old.start, oldSize, packed);
}

bool PackedFields::Assign(std::span<const std::byte> bytes) {
    bytes_.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (IsWhole()) return true;
    bytes_.clear();
    return false;
}

PackedFields::Place PackedFields::At(std::size_t start) const {
    Head head;
    std::memcpy(&head, bytes_.data() + start, sizeof head);
    const std::size_t text = start + sizeof head;
    return {start, text, text + head.size, head.field};
}

// The field of that number, or else the one before which it would stand; at the end a place without a field.
PackedFields::Place PackedFields::FirstFrom(int field) const {
    constexpr int kNoField = -1;
    for (std::size_t start = 0; start < bytes_.size();) {
        const Place place = At(start);
        if (place.field >= field) return place;
        start = place.end;
    }
    return {bytes_.size(), bytes_.size(), bytes_.size(), kNoField};
}

bool PackedFields::IsWhole() const {
    int previous = -1;
    for (std::size_t start = 0; start < bytes_.size();) {
        if (bytes_.size() - start < sizeof(Head)) return false;
        const Place place = At(start);
        if (place.field <= previous || place.end > bytes_.size()) return false;
        previous = place.field;
        start = place.end;
    }
    return true;
}
