#pragma once

// XML documents: trees of nodes with throwing and non-throwing look-ups and typed attributes.
//
// Handles. Document, Element, Text and the others are handles: small values that name a node. Copying a handle copies
// no node; both copies name the same one. Clone and InsertEndChild copy nodes.
//
// Life time. A handle that a caller constructs or copies keeps its whole tree alive. The pointers that look-ups return
// are owned by the tree: never delete them; they stay valid while the tree lives, that is while any handle by value
// into it lives. A look-up of the same node returns the same pointer, and allocates nothing for it. A pointer or
// handle to a node that has been removed (RemoveChild, ReplaceChild, RemoveAttribute, Clear, Parse, LoadFile) may be
// kept; using it throws.
//
// Text. Narrow text is UTF-8, file names too. A text that is not well-formed UTF-8 is read byte for byte. Attribute
// values survive writing and reading whatever they hold, control characters included. So do the texts that this library
// writes; in a text of other origin white space at the ends is dropped and a run of it within counts as one space.
//
// Numbers. Written and read alike in every locale. Floating point numbers are written with the fewest digits that read
// back to the same value, with a point; NaN and the infinities are no numbers: writing them throws. Reading takes white
// space at either end and a plus sign; anything else around the number, an empty text, or a value that the type cannot
// hold is a conversion error. bool is written as 1 or 0 and read from 1, 0, true or false. char is one character, the
// other character types are numbers. An enumeration is its number.
//
// Errors are thrown as Exception. A conversion error throws from every function that converts, also from those that do
// not throw when an attribute is missing; the target is then unchanged.
//
// One tree is used by one thread at a time.

#include <concepts>
#include <cstddef>
#include <exception>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#ifdef ticpp_EXPORTS
#define TICPP_API __declspec(dllexport)
#else
#define TICPP_API __declspec(dllimport)
#endif

class TiXmlAttribute;
class TiXmlElement;
class TiXmlNode;

namespace ticpp {

// What a document that is read may hold at most; beyond it reading throws before anything is parsed. A tree built by
// calls may be deeper; it is written, but not read back.
inline constexpr int kMaxDepth = 1000;               // elements within one another
inline constexpr int kMaxAttributes = 1000;          // attributes of one element
inline constexpr std::size_t kMaxBytes = 1u << 30u;  // size of the document

class TICPP_API Exception : public std::exception {
public:
    explicit Exception(const std::string& details);
    ~Exception() override;
    const char* what() const noexcept override;

    std::string m_details;  // what failed, with the element's name and line where they are known
};

class Attribute;
class Comment;
class Declaration;
class Document;
class Element;
class Node;
class Text;
class Unknown;

namespace detail {

struct Slot;
struct Tree;

// A text argument: a zero-terminated text (null counts as empty) or any string class.
class View : public std::string_view {
public:
    View() = default;
    View(const char* text) : std::string_view(text ? text : "") {}
    View(std::string_view text) : std::string_view(text) {}
    template <class T>
    requires requires(const T& text) {
        { text.c_str() } -> std::convertible_to<const char*>;
    }
    View(const T& text) : View(FromString(text)) {}

private:
    template <class T>
    static View FromString(const T& text) {
        if constexpr (std::is_convertible_v<const T&, std::string_view>) return View(std::string_view(text));
        return View(static_cast<const char*>(text.c_str()));
    }
};

TICPP_API bool ReadNumber(std::string_view text, bool* value);
TICPP_API bool ReadNumber(std::string_view text, long long* value);
TICPP_API bool ReadNumber(std::string_view text, unsigned long long* value);
TICPP_API bool ReadNumber(std::string_view text, float* value);
TICPP_API bool ReadNumber(std::string_view text, double* value);
TICPP_API std::string WriteNumber(bool value);
TICPP_API std::string WriteNumber(long long value);
TICPP_API std::string WriteNumber(unsigned long long value);
TICPP_API std::string WriteNumber(float value);
TICPP_API std::string WriteNumber(double value);

// The type as which a number crosses the DLL's border.
template <class T>
using Wide =
    std::conditional_t<std::is_same_v<T, bool> || std::is_same_v<T, float>, T,
                       std::conditional_t<std::is_floating_point_v<T>, double,
                                          std::conditional_t<std::is_signed_v<T>, long long, unsigned long long>>>;

// False, and value unchanged, when text is none of T.
template <class T>
bool FromText(const std::string& text, T* value) {
    if constexpr (std::is_enum_v<T>) {
        std::underlying_type_t<T> number{};
        if (!FromText(text, &number)) return false;
        *value = static_cast<T>(number);
    } else if constexpr (std::is_same_v<T, char>) {
        if (text.size() != 1) return false;
        *value = text[0];
    } else if constexpr (std::is_arithmetic_v<T>) {
        Wide<T> wide{};
        if (!ReadNumber(text, &wide)) return false;
        if (std::is_integral_v<T> && static_cast<Wide<T>>(static_cast<T>(wide)) != wide) return false;
        *value = static_cast<T>(wide);
    } else if constexpr (std::is_assignable_v<T&, const std::string&>) {
        *value = text;
    } else {
        *value = text.c_str();
    }
    return true;
}

template <class T>
std::string ToText(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return ToText(static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_same_v<T, char>) {
        return std::string(1, value);
    } else if constexpr (std::is_arithmetic_v<T>) {
        return WriteNumber(static_cast<Wide<T>>(value));
    } else {
        return std::string(View(value));
    }
}

}  // namespace detail

// What nodes and attributes have in common.
class TICPP_API Base {
public:
    Base(const Base& other) noexcept;
    // Makes this handle name the other's node. Throws for a handle that a look-up returned: the tree owns those.
    Base& operator=(const Base& other);
    virtual ~Base();

    // Where the parser found it, from 1; 0 for what calls have made or copied.
    int Row() const;
    int Column() const;

    // Whether both name the same node.
    bool operator==(const Base& other) const noexcept;

protected:
    explicit Base(detail::Tree* tree) noexcept;  // takes the new tree over
    explicit Base(detail::Slot& slot) noexcept : slot_(&slot) {}

    detail::Slot* slot_;

private:
    friend class Node;
    // A look-up's handle holds nothing. One by value holds its tree. One whose node was linked to another tree holds
    // only its slot: such a handle is often made by new and never deleted, which must not leak the document.
    enum class Hold : unsigned char { kNothing, kTree, kSlot };
    Hold hold_ = Hold::kNothing;
};

class TICPP_API Attribute : public Base {
public:
    Attribute();
    Attribute(const std::string& name, const std::string& value);
    explicit Attribute(detail::Slot& slot) noexcept : Base(slot) {}

    std::string Name() const;
    std::string Value() const;
    template <class T>
    void GetName(T* name) const {
        Convert(Name(), name);
    }
    template <class T>
    void GetValue(T* value) const {
        Convert(Value(), value);
    }
    // Throws when name is empty.
    template <class T>
    void SetName(const T& name) {
        PutName(detail::ToText(name));
    }
    template <class T>
    void SetValue(const T& value) {
        PutValue(detail::ToText(value));
    }

    // The neighbours in the element, in the order of the document. At the end: throw, or return null.
    Attribute* Next(bool throwIfNoAttribute = true) const;
    Attribute* Previous(bool throwIfNoAttribute = true) const;

private:
    TiXmlAttribute* Xml() const;
    void PutName(const std::string& name);
    void PutValue(const std::string& value);
    [[noreturn]] void FailConversion(const std::string& text) const;
    template <class T>
    void Convert(const std::string& text, T* value) const {
        if (!detail::FromText(text, value)) FailConversion(text);
    }
};

// Look-ups by value (the name of an element, the text of the others) take an empty value for any. A look-up that finds
// nothing throws, or returns null when its last argument is false. The functions with a bool alone look for any.
class TICPP_API Node : public Base {
public:
    enum Kind { kDocument, kElement, kComment, kUnknown, kText, kDeclaration, kAnyKind };

    explicit Node(detail::Slot& slot) noexcept : Base(slot) {}

    int Type() const;  // a Kind

    // The name of an element, the text of a text or comment, the file name of a document.
    std::string Value() const;
    template <class T>
    void GetValue(T* value) const {
        if (!detail::FromText(Value(), value)) FailConversion(Value());
    }
    template <class T>
    void SetValue(const T& value) {
        PutValue(detail::ToText(value));
    }

    Node* Parent(bool throwIfNoParent = true) const;
    Document* GetDocument(bool throwIfNoDocument = true) const;
    bool NoChildren() const;

    Node* FirstChild(detail::View value = {}, bool throwIfNoChildren = true) const;
    Node* LastChild(detail::View value = {}, bool throwIfNoChildren = true) const;
    Node* NextSibling(detail::View value = {}, bool throwIfNoSiblings = true) const;
    Node* PreviousSibling(detail::View value = {}, bool throwIfNoSiblings = true) const;
    Element* FirstChildElement(detail::View value = {}, bool throwIfNoChildren = true) const;
    Element* NextSiblingElement(detail::View value = {}, bool throwIfNoSiblings = true) const;

    Node* FirstChild(std::integral auto throwIfNoChildren) const { return FirstChild({}, throwIfNoChildren != 0); }
    Node* LastChild(std::integral auto throwIfNoChildren) const { return LastChild({}, throwIfNoChildren != 0); }
    Node* NextSibling(std::integral auto throwIfNoSiblings) const { return NextSibling({}, throwIfNoSiblings != 0); }
    Node* PreviousSibling(std::integral auto throwIfNoSiblings) const {
        return PreviousSibling({}, throwIfNoSiblings != 0);
    }
    Element* FirstChildElement(std::integral auto throwIfNoChildren) const {
        return FirstChildElement({}, throwIfNoChildren != 0);
    }
    Element* NextSiblingElement(std::integral auto throwIfNoSiblings) const {
        return NextSiblingElement({}, throwIfNoSiblings != 0);
    }

    // The child after previous, or the first for null; null at the end.
    Node* IterateChildren(const Node* previous) const { return ChildAfter(previous, kAnyKind, {}); }
    Node* IterateChildren(detail::View value, const Node* previous) const {
        return ChildAfter(previous, kAnyKind, value);
    }
    Node* ChildAfter(const Node* previous, Kind kind, std::string_view value) const;
    Node* ChildBefore(const Node* next, Kind kind, std::string_view value) const;

    // Adds a copy of the node and all below it, and returns the copy. Throws for a document, and when this is neither
    // an element nor a document.
    Node* InsertEndChild(const Node& addThis);
    Node* InsertBeforeChild(const Node* beforeThis, const Node& addThis);
    Node* InsertAfterChild(const Node* afterThis, const Node& addThis);
    Node* ReplaceChild(Node* replaceThis, const Node& withThis);

    // Adds the node itself with all below it. It must stand alone until then: throws when it has a parent, is a
    // document or holds this. The caller's handle goes on naming it but no longer keeps it alive, so it may be on the
    // stack as well as made by new. Pointers into it stay valid while the document lives.
    Node* LinkEndChild(Node* childNode);

    // Deletes a child with all below it. Throws when it is no child of this.
    void RemoveChild(Node* removeThis);
    // Deletes all children; attributes stay.
    void Clear();
    // A copy of this and all below it, without a parent.
    std::unique_ptr<Node> Clone() const;

    // This as what it is; throws when it is something else.
    Document* ToDocument() const;
    Element* ToElement() const;
    Comment* ToComment() const;
    Unknown* ToUnknown() const;
    Text* ToText() const;
    Declaration* ToDeclaration() const;
    template <class T>
    T* To() const;

    // This and all below it as XML; with two empty texts all of it in one line. A document's children only.
    std::string AsXml(std::string_view indent = "    ", std::string_view lineBreak = "\n") const;

    TICPP_API friend std::ostream& operator<<(std::ostream& out, const Node& node);

protected:
    explicit Node(TiXmlNode* alone);  // takes over a node without a parent

    TiXmlNode* Xml() const;
    [[noreturn]] void FailConversion(const std::string& text) const;

private:
    TiXmlNode* XmlOfParent(const Node& adding) const;
    TiXmlNode* XmlOfChild(const Node* child) const;
    Node* HandleFor(TiXmlNode* node) const;
    void PutValue(const std::string& value);
    Node* As(Kind kind, const char* what) const;
    Node* Found(TiXmlNode* node, bool throwIfNone, const char* what, std::string_view value) const;
};

class TICPP_API Element : public Node {
public:
    static constexpr Kind kKind = kElement;

    Element();
    explicit Element(detail::View name);
    template <class T>
    Element(detail::View name, const T& text) : Element(name) {
        SetText(text);
    }
    explicit Element(detail::Slot& slot) noexcept : Node(slot) {}

    bool HasAttribute(detail::View name) const { return FindAttribute(name) != nullptr; }

    // The attribute's value. A missing attribute throws, or gives an empty text or a zero.
    std::string GetAttribute(detail::View name, bool throwIfNotFound = true) const;
    template <class T>
    T GetAttribute(detail::View name, bool throwIfNotFound = true) const {
        T value{};
        GetAttribute(name, &value, throwIfNotFound);
        return value;
    }
    // Reads the value into *value. A missing attribute throws, or leaves *value and returns false.
    template <class T>
    bool GetAttribute(detail::View name, T* value, bool throwIfNotFound = true) const {
        const std::string* text = FindAttribute(name);
        if (!text) return !throwIfNotFound ? false : FailMissing(name);
        return detail::FromText(*text, value) || FailConversion(name, *text);
    }
    std::string GetAttributeOrDefault(detail::View name, const std::string& defaultValue) const;
    template <class T, class DefaultT>
    void GetAttributeOrDefault(detail::View name, T* value, const DefaultT& defaultValue) const {
        if (!GetAttribute(name, value, false)) *value = static_cast<T>(defaultValue);
    }

    // Adds the attribute or changes its value. The name must not be empty; otherwise it is not checked. Adding is
    // linear in the number of the element's attributes.
    template <class T>
    void SetAttribute(detail::View name, const T& value) {
        PutAttribute(name, detail::ToText(value));
    }
    void RemoveAttribute(detail::View name);  // nothing happens when there is none
    Attribute* FirstAttribute(bool throwIfNoAttributes = true) const;
    Attribute* LastAttribute(bool throwIfNoAttributes = true) const;

    // The text that is the first child. None throws, or gives an empty text.
    std::string GetText(bool throwIfNotFound = true) const;
    template <class T>
    bool GetText(T* value, bool throwIfNotFound = true) const {
        const std::string* text = FindText();
        if (!text) return !throwIfNotFound ? false : FailMissingText();
        if (!detail::FromText(*text, value)) Node::FailConversion(*text);
        return true;
    }
    std::string GetTextOrDefault(const std::string& defaultValue) const;
    template <class T, class DefaultT>
    void GetTextOrDefault(T* value, const DefaultT& defaultValue) const {
        if (!GetText(value, false)) *value = static_cast<T>(defaultValue);
    }
    // Replaces the text that is the first child, or puts one there. An empty text is not kept in a file.
    template <class T>
    void SetText(const T& value) {
        PutText(detail::ToText(value));
    }

private:
    TiXmlElement* Xml() const;
    const std::string* FindAttribute(std::string_view name) const;
    const std::string* FindText() const;
    void PutAttribute(std::string_view name, const std::string& value);
    void PutText(const std::string& text);
    bool FailMissing(std::string_view name) const;  // these three throw
    bool FailMissingText() const;
    bool FailConversion(std::string_view name, const std::string& text) const;
};

class TICPP_API Document : public Node {
public:
    static constexpr Kind kKind = kDocument;

    Document();
    explicit Document(detail::View fileName);  // reads nothing yet
    explicit Document(detail::Slot& slot) noexcept : Node(slot) {}

    // Reads a file, its name becoming the document's value. What the document held before is gone. Throws when the file
    // cannot be read or is no XML with an element; the document is then empty. A byte order mark is skipped.
    void LoadFile();
    void LoadFile(detail::View fileName);
    // Reads a text likewise. When not to throw, a failure shows as a document without children.
    void Parse(detail::View xml, bool throwIfParseError = true);

    // Writes the document, indented, with line ends as Windows has them. The file is complete or untouched: it is
    // written to a temporary beside it, which takes its place when it is on the disk. Throws when that fails.
    void SaveFile() const;
    void SaveFile(detail::View fileName) const;
};

class TICPP_API Text : public Node {
public:
    static constexpr Kind kKind = kText;

    Text();
    template <class T>
    requires(!std::derived_from<T, Base>) explicit Text(const T& value) : Text(detail::ToText(value), false) {}
    explicit Text(detail::Slot& slot) noexcept : Node(slot) {}

    bool CDATA() const;
    void SetCDATA(bool cdata);  // how it is written; the text itself is the same

private:
    Text(const std::string& value, bool cdata);
};

class TICPP_API Comment : public Node {
public:
    static constexpr Kind kKind = kComment;

    Comment();
    explicit Comment(detail::View text);  // "--" within is written as "- -"
    explicit Comment(detail::Slot& slot) noexcept : Node(slot) {}
};

class TICPP_API Declaration : public Node {
public:
    static constexpr Kind kKind = kDeclaration;

    Declaration();
    // Empty texts are left out.
    Declaration(detail::View version, detail::View encoding, detail::View standalone);
    explicit Declaration(detail::Slot& slot) noexcept : Node(slot) {}

    std::string Version() const;
    std::string Encoding() const;
    std::string Standalone() const;
};

// What is none of the above, such as a document type; its value is all between the brackets.
class TICPP_API Unknown : public Node {
public:
    static constexpr Kind kKind = kUnknown;

    Unknown();
    explicit Unknown(detail::Slot& slot) noexcept : Node(slot) {}
};

template <class T>
T* Node::To() const {
    if constexpr (std::is_same_v<T, Document>) return ToDocument();
    if constexpr (std::is_same_v<T, Element>) return ToElement();
    if constexpr (std::is_same_v<T, Comment>) return ToComment();
    if constexpr (std::is_same_v<T, Unknown>) return ToUnknown();
    if constexpr (std::is_same_v<T, Text>) return ToText();
    if constexpr (std::is_same_v<T, Declaration>) return ToDeclaration();
}

// Walks the children of one type (Node: all), or the attributes of an element, optionally of one value or name:
//     ticpp::Iterator<ticpp::Element> child("part");
//     for (child = child.begin(parent); child != child.end(); ++child) child->GetAttribute("id", &id);
// Moving on from the end stays there. The node that it stands on must not be removed.
template <class T = Node>
class Iterator {
public:
    Iterator() = default;
    Iterator(T* node, detail::View value = {}) : node_(node), value_(value) {}
    explicit Iterator(const char* value) : value_(detail::View(value)) {}
    explicit Iterator(const std::string& value) : value_(value) {}

    Iterator& operator=(T* node) {
        node_ = node;
        return *this;
    }

    T* begin(const Node* parent) const {
        if (!parent) return nullptr;
        if constexpr (kAttributes) {
            return Named(parent->ToElement()->FirstAttribute(false), &Attribute::Next);
        } else {
            return static_cast<T*>(parent->ChildAfter(nullptr, Kind(), value_));
        }
    }
    T* end() const { return nullptr; }

    T* Get() const { return node_; }
    T& operator*() const { return *node_; }
    T* operator->() const { return node_; }

    bool operator==(const T* node) const { return node_ == node; }
    bool operator==(const Iterator& other) const { return node_ == other.node_; }

    Iterator& operator++() {
        if (!node_) return *this;
        if constexpr (kAttributes) {
            node_ = Named(node_->Next(false), &Attribute::Next);
        } else {
            const Node* parent = node_->Parent(false);
            node_ = parent ? static_cast<T*>(parent->ChildAfter(node_, Kind(), value_)) : nullptr;
        }
        return *this;
    }
    Iterator& operator--() {
        if (!node_) return *this;
        if constexpr (kAttributes) {
            node_ = Named(node_->Previous(false), &Attribute::Previous);
        } else {
            const Node* parent = node_->Parent(false);
            node_ = parent ? static_cast<T*>(parent->ChildBefore(node_, Kind(), value_)) : nullptr;
        }
        return *this;
    }
    Iterator operator++(int) {
        Iterator before(*this);
        ++*this;
        return before;
    }
    Iterator operator--(int) {
        Iterator before(*this);
        --*this;
        return before;
    }

private:
    static constexpr bool kAttributes = std::is_same_v<T, Attribute>;

    static constexpr Node::Kind Kind() {
        if constexpr (std::is_same_v<T, Node>) return Node::kAnyKind;
        if constexpr (!std::is_same_v<T, Node>) return T::kKind;
    }
    // attribute or the nearest beyond it that has the wanted name.
    Attribute* Named(Attribute* attribute, Attribute* (Attribute::*step)(bool) const) const {
        while (attribute && !value_.empty() && attribute->Name() != value_)
            attribute = (attribute->*step)(false);
        return attribute;
    }

    T* node_ = nullptr;
    std::string value_;
};

}  // namespace ticpp
