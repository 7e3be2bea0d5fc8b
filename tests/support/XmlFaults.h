#pragma once

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// What can be wrong with XML that other programs wrote or that came through other hands.

/// Changes texts at random, in the same way in every run.
class XmlMutator {
public:
    /// `values` come into attributes besides those that are hard for every reader.
    explicit XmlMutator(unsigned seed, std::vector<std::string> values = {})
        : random_(seed), values_(std::move(values)) {
        std::istringstream hard(
            "0 1 2 -1 +1 1.5 1,5 1e39 1e400 1e-400 nan inf 0x10 true 256 32768 -32769 65536 2147483648 -2147483649 "
            "99999999999999999999 &amp &#0; &#xD800; &#x110000; &lt;&#9;&#10; ' < > \xED\xA0\xBD \xE4 \xF0\x9F\x98");
        values_.insert(values_.end(), std::istream_iterator<std::string>(hard), {});
        values_.insert(values_.end(), {"", " "});
    }

    // Half of the texts get other values only, so that they are still documents.
    std::string operator()(std::string text) {
        constexpr void (XmlMutator::*kChanges[])(std::string&) = {&XmlMutator::ReplaceValue, &XmlMutator::FlipBit,
                                                                  &XmlMutator::Delete,       &XmlMutator::InsertByte,
                                                                  &XmlMutator::InsertMarkup, &XmlMutator::Duplicate};
        const std::size_t kinds = Below(2) ? std::size(kChanges) : 1;
        for (std::size_t n = 1 + Below(3); n > 0; --n)
            (this->*kChanges[Below(kinds)])(text);
        return text;
    }

private:
    std::size_t Below(std::size_t limit) { return random_() % limit; }
    std::size_t Length(const std::string& text) { return Below(1 + std::min<std::size_t>(text.size(), 60)); }

    void FlipBit(std::string& text) {
        if (!text.empty()) text[Below(text.size())] ^= static_cast<char>(1 << Below(8));
    }
    void Delete(std::string& text) { text.erase(Below(text.size() + 1), Length(text)); }
    void InsertByte(std::string& text) {
        static constexpr char kBytes[] = "<>/\"'=&;!-[]? \r\n\x01\xC3\xED\xFF.0a";  // and the NUL at its end
        text.insert(Below(text.size() + 1), 1, kBytes[Below(std::size(kBytes))]);
    }
    void InsertMarkup(std::string& text) {
        static constexpr const char* kMarkup[] = {"<a>",   "</a>", "<!--",      "-->",
                                                  "=\"\"", "/>",   "<![CDATA[", "<Property id=\"1\"/>"};
        text.insert(Below(text.size() + 1), kMarkup[Below(std::size(kMarkup))]);
    }
    void Duplicate(std::string& text) {
        const std::string slice = text.substr(Below(text.size() + 1), Length(text));
        text.insert(Below(text.size() + 1), slice);
    }
    void ReplaceValue(std::string& text) {
        const std::size_t value = text.find("=\"", Below(text.size() + 1));
        if (value == std::string::npos) return;
        text.replace(value + 2, text.find('"', value + 2) - value - 2, values_[Below(values_.size())]);
    }

    std::mt19937 random_;
    std::vector<std::string> values_;
};

/// The beginnings of a document that lack its end, the empty one too.
inline std::vector<std::string> Truncated(const std::string& xml) {
    std::vector<std::string> texts;
    for (std::size_t size = 0; size < xml.rfind('>'); ++size)
        texts.push_back(xml.substr(0, size));
    return texts;
}

/// Elements of that name within each other, the last one around `innermost`.
inline std::string Nested(const std::string& name, int depth, const std::string& innermost = {}) {
    std::string start;
    std::string end;
    for (int i = 0; i < depth; ++i) {
        start += "<" + name + ">";
        end += "</" + name + ">";
    }
    return start + innermost + end;
}
