#include <occommonui/CustomProperty.h>

#include <cwchar>
#include <optional>
#include <string_view>

namespace CustomProperty::Format {

namespace {

/// The number that a text begins with, as a "%d" scan reads it; out of range it is the nearest in range.
std::optional<long> LeadingNumber(const ustr& text) {
    wchar_t* end = nullptr;
    const long number = std::wcstol(text.c_str(), &end, 10);
    if (end == text.c_str()) return std::nullopt;
    return number;
}

/// The item of the text between two braces, none when it does not begin with a number.
std::optional<Item> ReadReference(std::wstring_view inside) {
    const std::size_t bar = inside.find(L'|');
    const std::optional<long> id = LeadingNumber(ustr(inside.substr(0, bar)));
    if (!id) return std::nullopt;
    return Item(*id, bar == inside.npos ? ustr() : ustr(inside.substr(bar)));
}

/// Open: between braces. Swallowing: between braces too, but what was read there is no reference and no later "}" can
/// make it one, because the text up to that brace begins alike.
enum class Brace { None, Open, Swallowing };

std::vector<Item> ParseItems(std::wstring_view format) {
    std::vector<Item> items;
    ustr literal;
    Brace brace = Brace::None;
    std::size_t open = 0;
    const auto flush = [&] {
        if (!literal.empty()) items.emplace_back(0, literal);
        literal.clear();
    };
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] == L'{') {
            flush();
            brace = Brace::Open;
            open = i + 1;
        } else if (format[i] == L'}' && brace == Brace::None) {
            return items;
        } else if (format[i] == L'}' && brace == Brace::Open) {
            std::optional<Item> item = ReadReference(format.substr(open, i - open));
            brace = item ? Brace::None : Brace::Swallowing;
            if (item) items.push_back(std::move(*item));
        } else if (brace == Brace::None) {
            literal.append(format[i]);
        }
    }
    flush();
    return items;
}

}  // namespace

Item::Item() = default;
Item::Item(long itemId, const ustr& itemText) : id(itemId), text(itemText) {
}
Item::Item(const Item&) = default;
Item::Item(Item&&) noexcept = default;
Item& Item::operator=(const Item&) = default;
Item& Item::operator=(Item&&) noexcept = default;
Item::~Item() = default;

bool Item::IsText() const {
    return id <= 0;
}

std::vector<Item> Parse(const ustr& format) {
    try {
        return ParseItems(format);
    } catch (...) {
        return {};
    }
}

ustr Build(const std::vector<Item>& items) {
    try {
        ustr_pre<32> result;
        for (const Item& item : items) {
            if (item.IsText()) {
                result.append(item.text);
            } else {
                result.formatCat(L"{%d%s}", item.id, item.text.c_str());
            }
        }
        return result;
    } catch (...) {
        return {};
    }
}

}  // namespace CustomProperty::Format
