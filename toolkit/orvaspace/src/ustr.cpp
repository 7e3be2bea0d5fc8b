#include <orvaspace/ustr.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <stdexcept>

#include "Utf.h"

namespace orvaspace {

namespace {

// The last place at or before `size` that lies between two characters.
std::size_t CharacterBoundary(std::wstring_view text, std::size_t size) {
    const bool splitsPair = size > 0 && IsHighSurrogate(text[size - 1]) && IsLowSurrogate(text[size]);
    return splitsPair ? size - 1 : size;
}

std::size_t CharacterBoundary(std::string_view text, std::size_t size) {
    constexpr std::size_t kMostBytesBefore = 3;
    for (std::size_t before = 1; before <= std::min(size, kMostBytesBefore); ++before) {
        const Utf8Step step = ReadUtf8(text.substr(size - before));
        if (step.wellFormed && step.length > before) return size - before;
    }
    return size;
}

// The locale that numbers are written in, whatever the process has set.
_locale_t PlainLocale() {
    static const _locale_t locale = _create_locale(LC_ALL, "C");
    return locale;
}

// How many units will be printed; negative when the format is unusable.
int PrintedLength(const wchar_t* format, std::va_list arguments) {
    return _vscwprintf_l(format, PlainLocale(), arguments);
}

int PrintedLength(const char* format, std::va_list arguments) {
    return _vscprintf_l(format, PlainLocale(), arguments);
}

int PrintTo(wchar_t* to, std::size_t room, const wchar_t* format, std::va_list arguments) {
    return _vsnwprintf_l(to, room, format, PlainLocale(), arguments);
}

int PrintTo(char* to, std::size_t room, const char* format, std::va_list arguments) {
    return _vsnprintf_l(to, room, format, PlainLocale(), arguments);
}

}  // namespace

template <class C>
BasicText<C>& BasicText<C>::operator=(BasicText&& other) {  // NOLINT(performance-noexcept-move-constructor)
    if (this != &other) Take(other);
    return *this;
}

template <class C>
void BasicText<C>::Take(BasicText& other) {
    if (other.OnHeap()) {
        Adopt(other.data_, other.capacity_);
        size_ = other.size_;
        other.GoHome();
        return;
    }
    if (other.size_ <= homeCapacity_) {
        Free();
        GoHome();
    }
    assign(other);
    other.clear();
}

template <class C>
BasicText<C>& BasicText<C>::assign(View text) {
    if (text.size() > capacity_) {
        auto fresh = Allocate(text.size());
        View::traits_type::copy(fresh.get(), text.data(), text.size());
        Adopt(fresh.release(), text.size());
    } else {
        View::traits_type::move(data_, text.data(), text.size());
    }
    SetSize(text.size());
    return *this;
}

template <class C>
std::unique_ptr<C[]> BasicText<C>::Allocate(std::size_t capacity) {
    if (capacity > max_size()) throw std::length_error("text too long");
    return std::make_unique_for_overwrite<C[]>(capacity + 1);
}

template <class C>
std::size_t BasicText<C>::CapacityFor(std::size_t extra) const {
    if (extra > max_size() - size_) throw std::length_error("text too long");
    constexpr std::size_t kLeast = 15;
    return std::min(max_size(), std::max({size_ + extra, capacity_ + capacity_ / 2, kLeast}));
}

template <class C>
void BasicText<C>::Reallocate(std::size_t capacity) {
    auto fresh = Allocate(capacity);
    View::traits_type::copy(fresh.get(), data_, size_ + 1);
    Adopt(fresh.release(), capacity);
}

template <class C>
void BasicText<C>::reserve(std::size_t capacity) {
    if (capacity > capacity_) Reallocate(capacity);
}

template <class C>
void BasicText<C>::resize(std::size_t size, C fill) {
    if (size > capacity_) Reallocate(CapacityFor(size - size_));
    if (size > size_) View::traits_type::assign(data_ + size_, size - size_, fill);
    SetSize(size);
}

template <class C>
void BasicText<C>::truncate(std::size_t size) noexcept {
    if (size < size_) SetSize(CharacterBoundary(*this, size));
}

template <class C>
void BasicText<C>::erase(std::size_t from, std::size_t to) noexcept {
    to = std::min(to, size_);
    if (from >= to) return;
    View::traits_type::move(data_ + from, data_ + to, size_ - to);
    SetSize(size_ - (to - from));
}

template <class C>
BasicText<C> BasicText<C>::slice(std::size_t from, std::size_t to) const {
    to = std::min(to, size_);
    return from < to ? BasicText(data_ + from, to - from) : BasicText();
}

template <class C>
BasicText<C>& BasicText<C>::append(View text) {
    const std::size_t size = size_ + text.size();
    if (text.size() > capacity_ - size_) {
        const std::size_t capacity = CapacityFor(text.size());
        auto fresh = Allocate(capacity);
        View::traits_type::copy(fresh.get(), data_, size_);
        View::traits_type::copy(fresh.get() + size_, text.data(), text.size());
        Adopt(fresh.release(), capacity);
    } else {
        View::traits_type::move(data_ + size_, text.data(), text.size());
    }
    SetSize(size);
    return *this;
}

template <class C>
BasicText<C>& BasicText<C>::Print(const C* format, std::va_list arguments, bool keep) {
    if (!format) return *this;
    std::va_list again;
    va_copy(again, arguments);
    const int length = PrintedLength(format, again);
    va_end(again);
    if (length < 0) return *this;
    BasicTextPre<C, 255> printed;  // apart, because arguments may point into this text
    printed.resize(static_cast<std::size_t>(length));
    PrintTo(printed.data(), printed.size() + 1, format, arguments);
    return keep ? append(printed) : *this = std::move(printed);
}

template class BasicText<wchar_t>;
template class BasicText<char>;

}  // namespace orvaspace
