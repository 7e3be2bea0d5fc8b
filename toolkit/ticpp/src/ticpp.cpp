#include "ticpp.h"

#include <ostream>

#include "File.h"
#include "Scan.h"
#include "Tree.h"
#include "Write.h"

namespace ticpp {
namespace {

using detail::Slot;
using detail::SlotOf;
using detail::Tree;

TiXmlBase* Alive(const Slot& slot) {
    if (!slot.base) throw Exception("The node has been removed");
    return slot.base;
}

template <class T>
Tree* NewTree(std::unique_ptr<T> node) {
    return new Tree(std::move(node));
}

template <class T>
T* HandleOf(Slot& slot) {
    return static_cast<T*>(slot.handle);
}

// Whether it is an attribute of no element; TinyXML has no neighbours for those, not even an end.
bool StandsAlone(const Slot& slot) {
    return &slot == &slot.tree->first;
}

std::string Quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

// How messages name a node.
std::string Describe(const TiXmlNode& node) {
    if (node.ToDocument()) return node.ValueStr().empty() ? "the document" : "the document " + Quoted(node.ValueStr());
    const std::string line = node.Row() > 0 ? " (line " + std::to_string(node.Row()) + ")" : std::string();
    return (node.ToElement() ? "element " : "node ") + Quoted(node.ValueStr()) + line;
}

bool Matches(const TiXmlNode& node, Node::Kind kind, std::string_view value) {
    return (kind == Node::kAnyKind || node.Type() == static_cast<int>(kind)) &&
           (value.empty() || node.ValueStr() == value);
}

TiXmlNode* Forward(TiXmlNode* node, Node::Kind kind, std::string_view value) {
    while (node && !Matches(*node, kind, value))
        node = node->NextSibling();
    return node;
}

TiXmlNode* Backward(TiXmlNode* node, Node::Kind kind, std::string_view value) {
    while (node && !Matches(*node, kind, value))
        node = node->PreviousSibling();
    return node;
}

// Without the copy of the name that TinyXML's own search needs.
TiXmlAttribute* FindXmlAttribute(TiXmlElement* element, std::string_view name) {
    TiXmlAttribute* attribute = element->FirstAttribute();
    while (attribute && attribute->NameTStr() != name)
        attribute = attribute->Next();
    return attribute;
}

// What the parser is given: line ends made one, zeros behind the end because it may look a few bytes ahead.
std::string Prepare(std::string_view xml) {
    xml = xml.substr(0, xml.find('\0'));
    if (xml.size() > kMaxBytes) throw Exception("The document is too large");
    if (xml.starts_with("\xEF\xBB\xBF")) xml.remove_prefix(3);
    std::string text;
    text.reserve(xml.size() + 8);
    for (std::size_t end; (end = xml.find('\r')) != std::string_view::npos;) {
        text.append(xml.substr(0, end)).append("\n");
        xml.remove_prefix(end + (xml.substr(end).starts_with("\r\n") ? 2 : 1));
    }
    text.append(xml);
    text.append(8, '\0');
    return text;
}

void ParseInto(TiXmlDocument& document, std::string_view xml) {
    const std::string text = Prepare(xml);
    detail::CheckDocument(text.c_str());
    document.ClearError();
    document.Parse(text.c_str(), nullptr, detail::IsUtf8(text.c_str()) ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY);
    if (!document.Error() && !document.RootElement()) throw Exception("there is no element");
    if (!document.Error()) return;
    const std::string line = document.ErrorRow() > 0 ? "line " + std::to_string(document.ErrorRow()) + ": " : "";
    throw Exception(line + document.ErrorDesc());
}

void ClearChildren(TiXmlNode& node) {
    for (TiXmlNode* child = node.FirstChild(); child; child = child->NextSibling())
        detail::Forget(child);
    detail::DestroyChildren(&node);
}

// Leaves the document empty when it throws.
void Load(TiXmlDocument& document, std::string_view xml) {
    ClearChildren(document);
    try {
        ParseInto(document, xml);
    } catch (Exception& exception) {
        ClearChildren(document);
        exception.m_details = Describe(document) + ": " + exception.m_details;
        throw;
    }
}

}  // namespace

Exception::Exception(const std::string& details) : m_details(details) {
}
Exception::~Exception() = default;
const char* Exception::what() const noexcept {
    return m_details.c_str();
}

Base::Base(Tree* tree) noexcept : slot_(&tree->first), hold_(Hold::kTree) {
    detail::Hold(tree);
}

Base::Base(const Base& other) noexcept : slot_(other.slot_), hold_(Hold::kTree) {
    if (slot_->tree->ended) {
        hold_ = Hold::kSlot;
        ++slot_->tree->pins;
    } else {
        detail::Hold(slot_->tree);
    }
}

Base& Base::operator=(const Base& other) {
    if (this == &other) return *this;
    if (hold_ == Hold::kNothing)
        throw Exception("A pointer that a look-up returned cannot be made to name another node");
    Base copy(other);
    std::swap(slot_, copy.slot_);
    std::swap(hold_, copy.hold_);
    return *this;
}

Base::~Base() {
    if (hold_ == Hold::kTree) detail::Unhold(slot_->tree);
    if (hold_ == Hold::kSlot) detail::Unpin(slot_->tree);
}

int Base::Row() const {
    return Alive(*slot_)->Row();
}
int Base::Column() const {
    return Alive(*slot_)->Column();
}

bool Base::operator==(const Base& other) const noexcept {
    return slot_ == other.slot_;
}

Attribute::Attribute() : Base(NewTree(std::make_unique<TiXmlAttribute>())) {
}

Attribute::Attribute(const std::string& name, const std::string& value)
    : Base(NewTree(std::make_unique<TiXmlAttribute>(name, value))) {
}

std::string Attribute::Name() const {
    return Xml()->NameTStr();
}
std::string Attribute::Value() const {
    return Xml()->ValueStr();
}

Attribute* Attribute::Next(bool throwIfNoAttribute) const {
    TiXmlAttribute* next = StandsAlone(*slot_) ? nullptr : Xml()->Next();
    if (next) return HandleOf<Attribute>(SlotOf(next, slot_->tree));
    if (throwIfNoAttribute) throw Exception("No attribute follows " + Quoted(Name()));
    return nullptr;
}

Attribute* Attribute::Previous(bool throwIfNoAttribute) const {
    TiXmlAttribute* previous = StandsAlone(*slot_) ? nullptr : Xml()->Previous();
    if (previous) return HandleOf<Attribute>(SlotOf(previous, slot_->tree));
    if (throwIfNoAttribute) throw Exception("No attribute precedes " + Quoted(Name()));
    return nullptr;
}

TiXmlAttribute* Attribute::Xml() const {
    return static_cast<TiXmlAttribute*>(Alive(*slot_));
}

void Attribute::PutName(const std::string& name) {
    if (name.empty()) throw Exception("An attribute needs a name");
    Xml()->SetName(name);
}

void Attribute::PutValue(const std::string& value) {
    Xml()->SetValue(value);
}

void Attribute::FailConversion(const std::string& text) const {
    throw Exception("Attribute " + Quoted(Name()) + ": " + Quoted(text) + " cannot be converted");
}

Node::Node(TiXmlNode* alone) : Base(NewTree(std::unique_ptr<TiXmlNode>(alone))) {
}

int Node::Type() const {
    return Xml()->Type();
}
std::string Node::Value() const {
    return Xml()->ValueStr();
}

Node* Node::Parent(bool throwIfNoParent) const {
    return Found(Xml()->Parent(), throwIfNoParent, "No parent of ", {});
}

Document* Node::GetDocument(bool throwIfNoDocument) const {
    return static_cast<Document*>(Found(Xml()->GetDocument(), throwIfNoDocument, "No document of ", {}));
}

bool Node::NoChildren() const {
    return Xml()->NoChildren();
}

Node* Node::FirstChild(detail::View value, bool throwIfNoChildren) const {
    return Found(Forward(Xml()->FirstChild(), kAnyKind, value), throwIfNoChildren, "No such child of ", value);
}

Node* Node::LastChild(detail::View value, bool throwIfNoChildren) const {
    return Found(Backward(Xml()->LastChild(), kAnyKind, value), throwIfNoChildren, "No such child of ", value);
}

Node* Node::NextSibling(detail::View value, bool throwIfNoSiblings) const {
    return Found(Forward(Xml()->NextSibling(), kAnyKind, value), throwIfNoSiblings, "No such node after ", value);
}

Node* Node::PreviousSibling(detail::View value, bool throwIfNoSiblings) const {
    return Found(Backward(Xml()->PreviousSibling(), kAnyKind, value), throwIfNoSiblings, "No such node before ", value);
}

Element* Node::FirstChildElement(detail::View value, bool throwIfNoChildren) const {
    TiXmlNode* found = Forward(Xml()->FirstChild(), kElement, value);
    return static_cast<Element*>(Found(found, throwIfNoChildren, "No such element in ", value));
}

Element* Node::NextSiblingElement(detail::View value, bool throwIfNoSiblings) const {
    TiXmlNode* found = Forward(Xml()->NextSibling(), kElement, value);
    return static_cast<Element*>(Found(found, throwIfNoSiblings, "No such element after ", value));
}

Node* Node::ChildAfter(const Node* previous, Kind kind, std::string_view value) const {
    TiXmlNode* from = previous ? previous->Xml()->NextSibling() : Xml()->FirstChild();
    return Found(Forward(from, kind, value), false, "", {});
}

Node* Node::ChildBefore(const Node* next, Kind kind, std::string_view value) const {
    TiXmlNode* from = next ? next->Xml()->PreviousSibling() : Xml()->LastChild();
    return Found(Backward(from, kind, value), false, "", {});
}

Node* Node::InsertEndChild(const Node& addThis) {
    TiXmlNode* parent = XmlOfParent(addThis);
    return HandleFor(parent->LinkEndChild(detail::CopyOf(*addThis.Xml()).release()));
}

// TinyXML inserts only copies that it makes itself, so the copy's children follow afterwards.
Node* Node::InsertBeforeChild(const Node* beforeThis, const Node& addThis) {
    TiXmlNode* parent = XmlOfParent(addThis);
    const std::unique_ptr<TiXmlNode> copy = detail::CopyOf(*addThis.Xml());
    TiXmlNode* inserted = parent->InsertBeforeChild(XmlOfChild(beforeThis), *detail::CopyAlone(*copy));
    detail::CopyBelow(*copy, inserted);
    return HandleFor(inserted);
}

Node* Node::InsertAfterChild(const Node* afterThis, const Node& addThis) {
    const TiXmlNode* next = XmlOfChild(afterThis)->NextSibling();
    return next ? InsertBeforeChild(afterThis->NextSibling(), addThis) : InsertEndChild(addThis);
}

Node* Node::ReplaceChild(Node* replaceThis, const Node& withThis) {
    Node* inserted = InsertBeforeChild(replaceThis, withThis);
    RemoveChild(replaceThis);
    return inserted;
}

Node* Node::LinkEndChild(Node* childNode) {
    if (!childNode) throw Exception("There is no node to link");
    TiXmlNode* parent = XmlOfParent(*childNode);
    TiXmlNode* child = childNode->Xml();
    if (child->Parent()) throw Exception("Already has a parent: " + Describe(*child));
    Tree* into = detail::RootOf(slot_->tree);
    Tree* alone = childNode->slot_->tree;
    if (into == alone) throw Exception("A node cannot be linked into itself: " + Describe(*child));
    parent->LinkEndChild(child);
    detail::Absorb(alone, into);
    if (childNode->hold_ == Hold::kTree) {
        detail::Unhold(alone);
        ++alone->pins;
        childNode->hold_ = Hold::kSlot;
    }
    return HandleFor(child);
}

void Node::RemoveChild(Node* removeThis) {
    TiXmlNode* child = XmlOfChild(removeThis);
    detail::Forget(child);
    detail::DestroyChildren(child);
    Xml()->RemoveChild(child);
}

void Node::Clear() {
    ClearChildren(*Xml());
}

std::unique_ptr<Node> Node::Clone() const {
    const Node owner(detail::CopyOf(*Xml()).release());
    const Base& copy = *owner.slot_->handle;
    switch (Type()) {
        case kDocument:
            return std::make_unique<Document>(static_cast<const Document&>(copy));
        case kElement:
            return std::make_unique<Element>(static_cast<const Element&>(copy));
        case kComment:
            return std::make_unique<Comment>(static_cast<const Comment&>(copy));
        case kText:
            return std::make_unique<Text>(static_cast<const Text&>(copy));
        case kDeclaration:
            return std::make_unique<Declaration>(static_cast<const Declaration&>(copy));
        default:
            return std::make_unique<Unknown>(static_cast<const Unknown&>(copy));
    }
}

Document* Node::ToDocument() const {
    return static_cast<Document*>(As(kDocument, "document"));
}
Element* Node::ToElement() const {
    return static_cast<Element*>(As(kElement, "element"));
}
Comment* Node::ToComment() const {
    return static_cast<Comment*>(As(kComment, "comment"));
}
Unknown* Node::ToUnknown() const {
    return static_cast<Unknown*>(As(kUnknown, "unknown"));
}
Text* Node::ToText() const {
    return static_cast<Text*>(As(kText, "text"));
}
Declaration* Node::ToDeclaration() const {
    return static_cast<Declaration*>(As(kDeclaration, "declaration"));
}

std::string Node::AsXml(std::string_view indent, std::string_view lineBreak) const {
    return detail::WriteXml(*Xml(), indent, lineBreak);
}

std::ostream& operator<<(std::ostream& out, const Node& node) {
    return out << node.AsXml({}, {});
}

TiXmlNode* Node::Xml() const {
    return static_cast<TiXmlNode*>(Alive(*slot_));
}

TiXmlNode* Node::XmlOfParent(const Node& adding) const {
    TiXmlNode* parent = Xml();
    if (adding.Type() == kDocument) throw Exception("A document cannot be within another node");
    if (!parent->ToElement() && !parent->ToDocument()) throw Exception("Cannot have children: " + Describe(*parent));
    return parent;
}

TiXmlNode* Node::XmlOfChild(const Node* child) const {
    if (!child || child->Xml()->Parent() != Xml()) throw Exception("The node is no child of " + Describe(*Xml()));
    return child->Xml();
}

Node* Node::HandleFor(TiXmlNode* node) const {
    return HandleOf<Node>(SlotOf(node, slot_->tree));
}

Node* Node::Found(TiXmlNode* node, bool throwIfNone, const char* what, std::string_view value) const {
    if (node) return HandleFor(node);
    if (!throwIfNone) return nullptr;
    throw Exception(what + Describe(*Xml()) + (value.empty() ? "" : ": " + Quoted(value)));
}

Node* Node::As(Kind kind, const char* what) const {
    if (Type() != kind) throw Exception("Not of the type " + Quoted(what) + ": " + Describe(*Xml()));
    return static_cast<Node*>(slot_->handle);
}

void Node::PutValue(const std::string& value) {
    Xml()->SetValue(value);
}

void Node::FailConversion(const std::string& text) const {
    throw Exception("The text " + Quoted(text) + " cannot be converted: " + Describe(*Xml()));
}

Element::Element() : Element(detail::View()) {
}
Element::Element(detail::View name) : Node(new TiXmlElement(std::string(name))) {
}

std::string Element::GetAttribute(detail::View name, bool throwIfNotFound) const {
    const std::string* value = FindAttribute(name);
    if (!value && throwIfNotFound) FailMissing(name);
    return value ? *value : std::string();
}

std::string Element::GetAttributeOrDefault(detail::View name, const std::string& defaultValue) const {
    const std::string* value = FindAttribute(name);
    return value ? *value : defaultValue;
}

void Element::RemoveAttribute(detail::View name) {
    TiXmlAttribute* attribute = FindXmlAttribute(Xml(), name);
    if (!attribute) return;
    detail::Forget(attribute);
    Xml()->RemoveAttribute(std::string(name));
}

Attribute* Element::FirstAttribute(bool throwIfNoAttributes) const {
    if (TiXmlAttribute* first = Xml()->FirstAttribute()) return HandleOf<Attribute>(SlotOf(first, slot_->tree));
    if (throwIfNoAttributes) throw Exception("No attributes in " + Describe(*Xml()));
    return nullptr;
}

Attribute* Element::LastAttribute(bool throwIfNoAttributes) const {
    if (TiXmlAttribute* last = Xml()->LastAttribute()) return HandleOf<Attribute>(SlotOf(last, slot_->tree));
    if (throwIfNoAttributes) throw Exception("No attributes in " + Describe(*Xml()));
    return nullptr;
}

std::string Element::GetText(bool throwIfNotFound) const {
    std::string text;
    GetText(&text, throwIfNotFound);
    return text;
}

std::string Element::GetTextOrDefault(const std::string& defaultValue) const {
    const std::string* text = FindText();
    return text ? *text : defaultValue;
}

TiXmlElement* Element::Xml() const {
    return static_cast<TiXmlElement*>(Alive(*slot_));
}

const std::string* Element::FindAttribute(std::string_view name) const {
    const TiXmlAttribute* attribute = FindXmlAttribute(Xml(), name);
    return attribute ? &attribute->ValueStr() : nullptr;
}

const std::string* Element::FindText() const {
    const TiXmlNode* first = Xml()->FirstChild();
    return first && first->ToText() ? &first->ValueStr() : nullptr;
}

void Element::PutAttribute(std::string_view name, const std::string& value) {
    if (name.empty()) throw Exception("An attribute needs a name: " + Describe(*Xml()));
    if (TiXmlAttribute* attribute = FindXmlAttribute(Xml(), name)) {
        attribute->SetValue(value);
    } else {
        Xml()->SetAttribute(std::string(name), value);
    }
}

void Element::PutText(const std::string& text) {
    TiXmlNode* first = Xml()->FirstChild();
    if (first && first->ToText()) {
        first->SetValue(text);
    } else if (first) {
        Xml()->InsertBeforeChild(first, TiXmlText(text));
    } else {
        Xml()->LinkEndChild(new TiXmlText(text));
    }
}

bool Element::FailMissing(std::string_view name) const {
    throw Exception("Attribute " + Quoted(name) + " is missing: " + Describe(*Xml()));
}

bool Element::FailMissingText() const {
    throw Exception("No text in " + Describe(*Xml()));
}

bool Element::FailConversion(std::string_view name, const std::string& text) const {
    throw Exception("Attribute " + Quoted(name) + ": " + Quoted(text) + " cannot be converted: " + Describe(*Xml()));
}

Document::Document() : Document(detail::View()) {
}
Document::Document(detail::View fileName) : Node(new TiXmlDocument(std::string(fileName))) {
}

void Document::LoadFile() {
    LoadFile(Value());
}

void Document::LoadFile(detail::View fileName) {
    const std::string name(fileName);
    ClearChildren(*Xml());
    SetValue(name);
    Load(*Xml()->ToDocument(), detail::ReadFile(name));
}

void Document::Parse(detail::View xml, bool throwIfParseError) {
    try {
        Load(*Xml()->ToDocument(), xml);
    } catch (const Exception&) {
        if (throwIfParseError) throw;
    }
}

void Document::SaveFile() const {
    SaveFile(Value());
}
void Document::SaveFile(detail::View fileName) const {
    detail::WriteFile(fileName, AsXml("    ", "\r\n"));
}

Text::Text() : Text(std::string(), false) {
}

Text::Text(const std::string& value, bool cdata) : Node(new TiXmlText(value)) {
    SetCDATA(cdata);
}

bool Text::CDATA() const {
    return Xml()->ToText()->CDATA();
}
void Text::SetCDATA(bool cdata) {
    Xml()->ToText()->SetCDATA(cdata);
}

Comment::Comment() : Comment(detail::View()) {
}
Comment::Comment(detail::View text) : Node(new TiXmlComment(std::string(text).c_str())) {
}

Declaration::Declaration() : Declaration(detail::View(), detail::View(), detail::View()) {
}

Declaration::Declaration(detail::View version, detail::View encoding, detail::View standalone)
    : Node(new TiXmlDeclaration(std::string(version), std::string(encoding), std::string(standalone))) {
}

std::string Declaration::Version() const {
    return Xml()->ToDeclaration()->Version();
}
std::string Declaration::Encoding() const {
    return Xml()->ToDeclaration()->Encoding();
}
std::string Declaration::Standalone() const {
    return Xml()->ToDeclaration()->Standalone();
}

Unknown::Unknown() : Node(new TiXmlUnknown) {
}

}  // namespace ticpp
