#pragma once

#include <occommonui/FixedText.h>
#include <orvaspace/ustr.h>
#include <ticpp.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

// The XML form of a record as a table of rows, each of which says what one attribute or child element is called and
// which member it holds. WriteXml and ReadXml walk the same table, in its order.
//
// A number that its field cannot hold counts as unreadable, as a text does that is no number: reading throws
// ticpp::Exception. Text is UTF-8; bytes that are none become U+FFFD. A text longer than a fixed field is cut to it.

/// Whether an item must be there: reading throws when it is missing. A missing item that is optional is read as zero or
/// empty when it is an attribute, and leaves the record as it was when it is a child.
struct XmlNeed {
    bool required = true;
    /// The format that brought the item, which is not looked for in older ones.
    int since = std::numeric_limits<int>::min();
};
inline constexpr XmlNeed kRequired{};
inline constexpr XmlNeed kOptional{.required = false};

/// How one item of the element is written and read. `read` gets the format of what is being read.
template <class Record>
struct XmlItem {
    void (*write)(ticpp::Element& element, const char* name, const Record& record);
    void (*read)(const ticpp::Element& element, const char* name, const XmlNeed& need, int format, Record& record);
};

template <class Record>
struct XmlRow {
    const char* name;
    XmlItem<Record> item;
    XmlNeed need;
};

template <class Record, std::size_t n>
void WriteXml(ticpp::Element& element, const XmlRow<Record> (&rows)[n], const Record& record) {
    for (const auto& row : rows)
        row.item.write(element, row.name, record);
}

/// Stores each item as it is read; one that the format does not have yet stays as it is.
template <class Record, std::size_t n>
void ReadXml(const ticpp::Element& element, const XmlRow<Record> (&rows)[n], int format, Record& record) {
    for (const auto& row : rows) {
        if (format >= row.need.since) row.item.read(element, row.name, row.need, format, record);
    }
}

/// What every element begins with.
inline void WriteXmlStamp(ticpp::Element& element, int version, int format) {
    element.SetAttribute("Version", version);
    element.SetAttribute("Format", format);
}

/// The element's format. Its version must be there and says nothing.
inline int ReadXmlFormat(const ticpp::Element& element) {
    element.GetAttribute<int>("Version");
    return element.GetAttribute<int>("Format");
}

/// Adds a child element of this name, in place of those there are.
inline ticpp::Element& PutXmlChild(ticpp::Element& element, const char* name) {
    while (ticpp::Element* old = element.FirstChildElement(name, false))
        element.RemoveChild(old);
    return *element.InsertEndChild(ticpp::Element(name))->ToElement();
}

/// Runs `write`; false when it throws.
template <class Write>
bool TryWriteXml(Write write) {
    try {
        write();
        return true;
    } catch (...) {
        return false;
    }
}

/// What `read` answers; when it throws, false after `reset`.
template <class Read, class Reset>
bool TryReadXml(Read read, Reset reset) {
    try {
        return read();
    } catch (...) {
        reset();
        return false;
    }
}

/// The element that the record's ToXml fills, as the text of a document; throws when that fails.
template <class Record>
std::string XmlTextOf(const Record& record) {
    ticpp::Element element;
    if (!record.ToXml(element)) throw ticpp::Exception("The record cannot be written");
    return element.AsXml();
}

/// What the record's FromXml answers to the document's element, whatever its name; throws when the text is no document.
template <class Record>
bool ReadXmlText(const char* xml, Record& record) {
    ticpp::Document document;
    document.Parse(xml);
    return record.FromXml(*document.FirstChildElement());
}

/// A name as a template argument.
template <std::size_t n>
struct XmlName {
    char text[n];
    consteval XmlName(const char (&name)[n]) { std::copy(name, name + n, text); }
};

namespace xmlrows {

template <class T>
struct Member;
template <class Record, class T>
struct Member<T Record::*> {
    using Owner = Record;
    using Value = T;
};

// Records may be packed: a value in one is copied, never referred to. `at` is its place in an array.
template <class Value, class Record, class Whole>
Value Load(const Record& record, Whole Record::*member, int at = 0) {
    Value value;
    const auto* bytes = reinterpret_cast<const std::byte*>(&(record.*member));
    std::memcpy(&value, bytes + sizeof value * static_cast<std::size_t>(at), sizeof value);
    return value;
}
template <class Value, class Record, class Whole>
void Store(Record& record, Whole Record::*member, const Value& value, int at = 0) {
    auto* bytes = reinterpret_cast<std::byte*>(&(record.*member));
    std::memcpy(bytes + sizeof value * static_cast<std::size_t>(at), &value, sizeof value);
}

// The value as XML has it.
template <class Value>
struct Attribute {
    static void Write(ticpp::Element& element, const char* name, const Value& value) {
        if constexpr (std::is_convertible_v<const Value&, const ustr&>) {
            element.SetAttribute(name, orvaspace::ToUtf8(value));
        } else {
            element.SetAttribute(name, value);
        }
    }
    static Value Read(const ticpp::Element& element, const char* name, const XmlNeed& need) {
        if constexpr (std::is_same_v<Value, bool>) {
            return element.GetAttribute<int>(name, need.required) != 0;
        } else if constexpr (std::is_convertible_v<const Value&, const ustr&>) {
            return Value(orvaspace::ToWide(element.GetAttribute(name, need.required)));
        } else {
            return element.GetAttribute<Value>(name, need.required);
        }
    }
};

template <auto member>
struct AttributeOf {
    using Record = typename Member<decltype(member)>::Owner;
    using Value = typename Member<decltype(member)>::Value;

    static void Write(ticpp::Element& element, const char* name, const Record& record) {
        if constexpr (std::is_same_v<Value, bool>) {
            // Any byte, where a caller made the record of bytes.
            Attribute<bool>::Write(element, name, Load<unsigned char>(record, member) != 0);
        } else if constexpr (std::is_trivially_copyable_v<Value>) {
            Attribute<Value>::Write(element, name, Load<Value>(record, member));
        } else {
            Attribute<Value>::Write(element, name, record.*member);
        }
    }
    static void Read(const ticpp::Element& element, const char* name, const XmlNeed& need, int /*format*/,
                     Record& record) {
        Value value = Attribute<Value>::Read(element, name, need);
        if constexpr (std::is_trivially_copyable_v<Value>) {
            Store(record, member, value);
        } else {
            record.*member = std::move(value);
        }
    }
};

template <class Record, std::size_t n, wchar_t (Record::*member)[n]>
struct AttributeOf<member> {
    static void Write(ticpp::Element& element, const char* name, const Record& record) {
        Attribute<ustr>::Write(element, name, FixedText<member>(record));
    }
    static void Read(const ticpp::Element& element, const char* name, const XmlNeed& need, int /*format*/,
                     Record& record) {
        SetFixedText<member>(record, Attribute<ustr>::Read(element, name, need));
    }
};

template <XmlName item, auto entries, auto count, const auto& rows>
struct List {
    using Record = typename Member<decltype(entries)>::Owner;
    using Array = typename Member<decltype(entries)>::Value;
    using Entry = std::remove_extent_t<Array>;
    using Count = typename Member<decltype(count)>::Value;
    static constexpr int kLimit = static_cast<int>(std::extent_v<Array>);

    static void Write(ticpp::Element& element, const char* name, const Record& record) {
        ticpp::Element& list = PutXmlChild(element, name);
        const ticpp::Element blank(item.text);
        const int used = std::clamp<int>(Load<Count>(record, count), 0, kLimit);
        for (int i = 0; i < used; ++i)
            WriteXml(*list.InsertEndChild(blank)->ToElement(), rows, Load<Entry>(record, entries, i));
    }
    static void Read(const ticpp::Element& element, const char* name, const XmlNeed& need, int format, Record& record) {
        const ticpp::Element* list = element.FirstChildElement(name, need.required);
        if (!list) return;
        const ticpp::Element* child = list->FirstChildElement(item.text, false);
        int used = 0;
        for (; child && used < kLimit; child = child->NextSiblingElement(item.text, false)) {
            Entry entry{};
            ReadXml(*child, rows, format, entry);
            Store(record, entries, entry, used++);
        }
        Store(record, count, static_cast<Count>(used));
    }
};

}  // namespace xmlrows

/// The attribute that holds a member: kXmlAttribute<&R::name>. Flags are 0 and 1; any other number reads as true.
template <auto member>
inline constexpr XmlItem<typename xmlrows::Member<decltype(member)>::Owner> kXmlAttribute{
    xmlrows::AttributeOf<member>::Write, xmlrows::AttributeOf<member>::Read};

/// The attribute that holds the whole of a record that is no more than a number.
template <class Value>
inline constexpr XmlItem<Value> kXmlValue{
    xmlrows::Attribute<Value>::Write,
    [](const ticpp::Element& element, const char* name, const XmlNeed& need, int /*format*/, Value& value) {
        value = xmlrows::Attribute<Value>::Read(element, name, need);
    }};

/// The child element that a member which is a record with ToXml and FromXml has written. That the member cannot be read
/// is the member's own affair.
template <auto member>
inline constexpr XmlItem<typename xmlrows::Member<decltype(member)>::Owner> kXmlChild{
    [](ticpp::Element& element, const char* name, const auto& record) {
        if (!(record.*member).ToXml(PutXmlChild(element, name))) throw ticpp::Exception(name);
    },
    [](const ticpp::Element& element, const char* name, const XmlNeed& need, int /*format*/, auto& record) {
        const ticpp::Element* child = element.FirstChildElement(name, need.required);
        if (child) (record.*member).FromXml(*child);
    }};

/// The child element with the entries of an array that are in use, `count` of them, each an element `item` with the
/// attributes of `rows`: kXmlList<"Column", &R::columns, &R::columnCount, kColumnRows>. Elements for which there is no
/// room are not looked at. A count that the array cannot have is brought into it.
template <XmlName item, auto entries, auto count, const auto& rows>
inline constexpr XmlItem<typename xmlrows::Member<decltype(entries)>::Owner> kXmlList{
    xmlrows::List<item, entries, count, rows>::Write, xmlrows::List<item, entries, count, rows>::Read};
