#include <occommonui/CustomProperty.h>

#include <orvatool/String.h>

namespace CustomProperty {

namespace {

constexpr long kFirstPropId = -100;

Match MatchOf(const Data& data, const ustr& foldedName, const Data& other) {
    if (data.format == other.format) return data.name == other.name ? kSame : kSameFormat;
    if (data.name == other.name) return kSameName;
    return String::Fold(other.name) == foldedName ? kSameNameFolded : kNoMatch;
}

}  // namespace

Data::Data() = default;
Data::Data(const Data&) = default;
Data::Data(Data&&) noexcept = default;
Data& Data::operator=(const Data&) = default;
Data& Data::operator=(Data&&) noexcept = default;
Data::~Data() = default;

long Data::PropId() const {
    return kFirstPropId - id;
}

bool IsMyProperty(long propId) {
    return propId <= kFirstPropId;
}

std::vector<const Data*> Find(const std::vector<Data>& records, const ustr& name) {
    try {
        const ustr folded = String::Fold(name);
        std::vector<const Data*> found;
        for (const Data& record : records) {
            if (!record.name.empty() && (name.empty() || String::Fold(record.name) == folded)) found.push_back(&record);
        }
        return found;
    } catch (...) {
        return {};
    }
}

std::pair<std::int32_t, int> FindBestMatch(const Data& data, const std::vector<Data>& records) {
    std::pair<std::int32_t, int> best{0, kNoMatch};
    if (data.name.empty() || data.format.empty()) return best;
    try {
        const ustr foldedName = String::Fold(data.name);
        for (const Data& record : records) {
            const Match match = MatchOf(data, foldedName, record);
            const bool tieForOwnId = match == best.second && match != kNoMatch && record.id == data.id;
            if (match > best.second || (tieForOwnId && best.first != data.id)) best = {record.id, match};
        }
        return best;
    } catch (...) {
        return {0, kNoMatch};
    }
}

}  // namespace CustomProperty
