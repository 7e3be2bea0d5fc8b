#pragma once

#include <cassert>
#include <compare>
#include <concepts>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>

namespace orvaspace {

/// A text of any length that owns its characters. `ustr` holds UTF-16, `astr` holds UTF-8; positions and lengths count
/// code units. A text may hold NULs; one that is not counted always follows the last character. The content is not
/// checked: any sequence of units is kept as it is.
///
/// `ustr_pre<N>` and `astr_pre<N>` are a ustr or astr with room for N characters inside the object; only a longer text
/// goes to the heap. They are passed as `const ustr&` or `ustr&` without a copy, and one is made from and assigned from
/// another whatever their sizes. Do not delete one through a pointer to ustr.
///
/// Moving hands a heap buffer over; a text inside its object is copied. What was moved from is empty and usable.
/// An operation that needs memory and gets none throws std::bad_alloc (std::length_error beyond max_size()) and leaves
/// every text as it was. Arguments may be the text itself or a part of it. A null pointer counts as the empty text.
template <class C>
class BasicText {
public:
    using View = std::basic_string_view<C>;
    using value_type = C;
    using iterator = C*;
    using const_iterator = const C*;

    /// "To the end" as the end of a range.
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    BasicText() noexcept : BasicText(Home{&nothing_, 0}) {}
    BasicText(const C* text) : BasicText(AsView(text)) {}
    BasicText(const C* text, std::size_t size) : BasicText(text ? View(text, size) : View()) {}
    BasicText(View text) : BasicText() { assign(text); }
    BasicText(const BasicText& other) : BasicText(View(other)) {}
    /// Needs memory only for a text that lies inside a `ustr_pre`; std::terminate when there is none. The price of
    /// being noexcept, without which a vector would copy its texts when it grows.
    BasicText(BasicText&& other) noexcept : BasicText() { Take(other); }
    ~BasicText() { Free(); }

    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment)
    BasicText& operator=(const BasicText& other) { return assign(other); }
    /// Needs memory for a text that lies inside a `ustr_pre`.
    BasicText& operator=(BasicText&& other);  // NOLINT(performance-noexcept-move-constructor)
    BasicText& operator=(View text) { return assign(text); }
    BasicText& operator=(const C* text) { return assign(AsView(text)); }
    BasicText& assign(View text);

    operator View() const noexcept { return View(data_, size_); }
    const C* c_str() const noexcept { return data_; }
    const C* data() const noexcept { return data_; }
    /// The characters, to be written in place: size() of them, and a NUL that stays.
    C* data() noexcept { return data_; }
    std::size_t size() const noexcept { return size_; }
    std::size_t length() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }

    /// How long the text can grow before it needs memory.
    std::size_t capacity() const noexcept { return capacity_; }
    static constexpr std::size_t max_size() noexcept { return npos / (4 * sizeof(C)); }
    void reserve(std::size_t capacity);

    /// The character at `at`, which is size() or less; at size() it is the closing NUL, which must not be changed.
    const C& operator[](std::size_t at) const noexcept {
        assert(at <= size_);
        return data_[at];
    }
    C& operator[](std::size_t at) noexcept {
        assert(at <= size_);
        return data_[at];
    }
    iterator begin() noexcept { return data_; }
    iterator end() noexcept { return data_ + size_; }
    const_iterator begin() const noexcept { return data_; }
    const_iterator end() const noexcept { return data_ + size_; }

    /// Empties the text and keeps its memory.
    void clear() noexcept { SetSize(0); }
    /// Cuts the text to `size` units, or adds `fill` up to that size.
    void resize(std::size_t size, C fill = C());
    /// Cuts the text to at most `size` units and never through a character: of a surrogate pair or a well-formed UTF-8
    /// sequence that does not fit as a whole nothing stays.
    void truncate(std::size_t size) noexcept;
    /// Removes the units [from, to); both ends are brought into the text, and an empty range removes nothing.
    void erase(std::size_t from, std::size_t to) noexcept;
    /// The units [from, to); both ends are brought into the text, and an empty range gives the empty text.
    BasicText slice(std::size_t from, std::size_t to = npos) const;

    BasicText& append(View text);
    BasicText& append(const C* text) { return append(AsView(text)); }
    BasicText& append(C character) {
        if (size_ == capacity_) Reallocate(CapacityFor(1));
        data_[size_] = character;
        SetSize(size_ + 1);
        return *this;
    }
    BasicText& operator+=(View text) { return append(text); }
    BasicText& operator+=(const C* text) { return append(AsView(text)); }
    BasicText& operator+=(C character) { return append(character); }
    friend BasicText operator+(BasicText left, View right) { return std::move(left.append(right)); }

    /// Replaces the text by, or adds to it, what `format` makes of the arguments: as printf of the Microsoft runtime
    /// does it, but with a decimal point in every locale and without a limit of length. "%s" takes a wide text in ustr
    /// and a narrow one in astr; 64-bit integers are "%lld" or, in ustr, "%I64d". A null or unusable format changes
    /// nothing. Arguments may point into this text.
    __attribute__((format(ms_printf, 2, 3))) BasicText& format(const char* format, ...) requires std::same_as<C, char> {
        std::va_list arguments;
        va_start(arguments, format);
        BasicText& result = Print(reinterpret_cast<const C*>(format), arguments, false);
        va_end(arguments);
        return result;
    }
    __attribute__((format(ms_printf, 2, 3))) BasicText& formatCat(const char* format,
                                                                  ...) requires std::same_as<C, char> {
        std::va_list arguments;
        va_start(arguments, format);
        BasicText& result = Print(reinterpret_cast<const C*>(format), arguments, true);
        va_end(arguments);
        return result;
    }
    BasicText& format(const wchar_t* format, ...) requires std::same_as<C, wchar_t> {
        std::va_list arguments;
        va_start(arguments, format);
        BasicText& result = Print(reinterpret_cast<const C*>(format), arguments, false);
        va_end(arguments);
        return result;
    }
    BasicText& formatCat(const wchar_t* format, ...) requires std::same_as<C, wchar_t> {
        std::va_list arguments;
        va_start(arguments, format);
        BasicText& result = Print(reinterpret_cast<const C*>(format), arguments, true);
        va_end(arguments);
        return result;
    }

    /// Comparison is exact and by the unsigned value of the code units.
    friend bool operator==(const BasicText& a, const BasicText& b) noexcept { return View(a) == View(b); }
    friend bool operator==(const BasicText& a, View b) noexcept { return View(a) == b; }
    friend bool operator==(const BasicText& a, const C* b) noexcept { return View(a) == AsView(b); }
    friend auto operator<=>(const BasicText& a, const BasicText& b) noexcept { return View(a) <=> View(b); }
    friend auto operator<=>(const BasicText& a, View b) noexcept { return View(a) <=> b; }
    friend auto operator<=>(const BasicText& a, const C* b) noexcept { return View(a) <=> AsView(b); }

protected:
    /// Where a text lies while it is not on the heap: room for `capacity` characters and a NUL.
    struct Home {
        C* text;
        std::uint32_t capacity;
    };
    /// Starts as the empty text in `home`, whose first character the caller sets to NUL. `home` lives as long as this.
    explicit BasicText(Home home) noexcept
        : data_(home.text), capacity_(home.capacity), home_(home.text), homeCapacity_(home.capacity) {}

    /// Makes this text `other`'s, and `other` empty.
    void Take(BasicText& other);

private:
    static View AsView(const C* text) { return text ? View(text) : View(); }
    bool OnHeap() const noexcept { return data_ != home_; }
    void Free() noexcept {
        if (OnHeap()) delete[] data_;
    }
    void SetSize(std::size_t size) noexcept {
        size_ = size;
        data_[size] = C();
    }
    void GoHome() noexcept {
        data_ = home_;
        capacity_ = homeCapacity_;
        SetSize(0);
    }
    void Adopt(C* data, std::size_t capacity) noexcept {
        Free();
        data_ = data;
        capacity_ = capacity;
    }
    // The capacity for `extra` more units, with room to grow.
    std::size_t CapacityFor(std::size_t extra) const;
    static std::unique_ptr<C[]> Allocate(std::size_t capacity);
    void Reallocate(std::size_t capacity);
    BasicText& Print(const C* format, std::va_list arguments, bool keep);

    C* data_;
    std::size_t size_ = 0;
    std::size_t capacity_;
    C* const home_;
    const std::uint32_t homeCapacity_;
    C nothing_ = C();  // the home of a text without a buffer of its own
};

/// BasicText with room for N characters inside the object.
template <class C, std::size_t N>
class BasicTextPre : public BasicText<C> {
    static_assert(N > 0 && N <= UINT32_MAX);
    using Base = BasicText<C>;

public:
    using typename Base::View;

    BasicTextPre() noexcept : Base(typename Base::Home{buffer_, static_cast<std::uint32_t>(N)}) { buffer_[0] = C(); }
    BasicTextPre(const C* text) : BasicTextPre() { Base::operator=(text); }
    BasicTextPre(const C* text, std::size_t size) : BasicTextPre() { Base::assign(text ? View(text, size) : View()); }
    BasicTextPre(View text) : BasicTextPre() { Base::assign(text); }
    BasicTextPre(const Base& other) : BasicTextPre() { Base::assign(other); }
    BasicTextPre(Base&& other) : BasicTextPre() { Base::Take(other); }
    BasicTextPre(const BasicTextPre& other) : BasicTextPre() { Base::assign(other); }
    BasicTextPre(BasicTextPre&& other) noexcept : BasicTextPre() { Base::Take(other); }

    using Base::operator=;
    BasicTextPre& operator=(const BasicTextPre& other) {  // NOLINT(bugprone-unhandled-self-assignment)
        Base::assign(other);
        return *this;
    }
    BasicTextPre& operator=(BasicTextPre&& other) noexcept {
        Base::operator=(std::move(other));
        return *this;
    }

private:
    C buffer_[N + 1];
};

extern template class BasicText<wchar_t>;
extern template class BasicText<char>;

}  // namespace orvaspace

using ustr = orvaspace::BasicText<wchar_t>;
using astr = orvaspace::BasicText<char>;
template <std::size_t N>
using ustr_pre = orvaspace::BasicTextPre<wchar_t, N>;
template <std::size_t N>
using astr_pre = orvaspace::BasicTextPre<char, N>;

namespace orvaspace {

/// UTF-16 as UTF-8. A surrogate without its partner is written as the three bytes that its value would take (which
/// strict readers refuse), so that ToWide(ToUtf8(text)) is `text` whatever it holds.
astr ToUtf8(std::wstring_view utf16);

/// UTF-8 as UTF-16. Accepts what ToUtf8 writes. Of anything else, each longest start of a character, and each byte that
/// cannot start one, becomes one U+FFFD. The two halves of a pair as three bytes each are no way to write the pair: the
/// second half's bytes become one U+FFFD each.
ustr ToWide(std::string_view utf8);

/// ToWide for text that must be right: false, and `out` as it was, when a U+FFFD would have to stand in. After true,
/// ToUtf8(out) is `utf8` again.
bool TryToWide(std::string_view utf8, ustr& out);

/// Hashes a text as its view; finds with a view where the container allows it.
template <class C>
struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::basic_string_view<C> text) const noexcept {
        return std::hash<std::basic_string_view<C>>()(text);
    }
};

}  // namespace orvaspace

template <class C>
struct std::hash<orvaspace::BasicText<C>> : orvaspace::TextHash<C> {};
template <class C, std::size_t N>
struct std::hash<orvaspace::BasicTextPre<C, N>> : orvaspace::TextHash<C> {};
