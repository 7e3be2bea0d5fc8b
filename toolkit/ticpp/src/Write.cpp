#include "Write.h"

#include <tinyxml.h>

#include <utility>

namespace ticpp::detail {
namespace {

class Writer {
public:
    Writer(const TiXmlNode& top, std::string_view indent, std::string_view lineBreak)
        : top_(top), indent_(indent), lineBreak_(lineBreak) {}

    std::string Write();

private:
    void Open(const TiXmlNode& node);
    void Close(const TiXmlNode& node);
    void OpenElement(const TiXmlElement& element);
    void WriteText(const TiXmlText& text);
    void WriteComment(const std::string& text);
    void WriteDeclaration(const TiXmlDeclaration& declaration);
    void Attribute(std::string_view name, const std::string& value);
    void Escape(const std::string& text);
    void Escape(char c);
    void BeginLine();
    void EndLine();

    const TiXmlNode& top_;
    std::string_view indent_;
    std::string_view lineBreak_;
    std::string out_;
    int depth_ = 0;
    const TiXmlNode* inline_ = nullptr;  // the element with text within which no line is broken
};

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool HasText(const TiXmlNode& node) {
    for (const TiXmlNode* child = node.FirstChild(); child; child = child->NextSibling()) {
        if (child->ToText()) return true;
    }
    return false;
}

std::string Writer::Write() {
    const TiXmlNode* node = &top_;
    for (;;) {
        Open(*node);
        if (node->FirstChild()) {
            node = node->FirstChild();
            continue;
        }
        while (node != &top_ && !node->NextSibling()) {
            node = node->Parent();
            Close(*node);
        }
        if (node == &top_) return std::move(out_);
        node = node->NextSibling();
    }
}

void Writer::Open(const TiXmlNode& node) {
    if (node.ToDocument()) return;
    if (const TiXmlText* text = node.ToText()) return WriteText(*text);
    BeginLine();
    if (const TiXmlElement* element = node.ToElement()) return OpenElement(*element);
    if (node.ToComment()) {
        WriteComment(node.ValueStr());
    } else if (const TiXmlDeclaration* declaration = node.ToDeclaration()) {
        WriteDeclaration(*declaration);
    } else {
        out_.append("<").append(node.ValueStr()).append(">");
    }
    EndLine();
}

void Writer::OpenElement(const TiXmlElement& element) {
    out_.append("<").append(element.ValueStr());
    for (const TiXmlAttribute* a = element.FirstAttribute(); a; a = a->Next())
        Attribute(a->NameTStr(), a->ValueStr());
    if (!element.FirstChild()) {
        out_ += " />";
        EndLine();
        return;
    }
    out_ += '>';
    if (!inline_ && HasText(element)) inline_ = &element;
    EndLine();
    ++depth_;
}

void Writer::Close(const TiXmlNode& node) {
    if (node.ToDocument()) return;
    --depth_;
    BeginLine();
    out_.append("</").append(node.ValueStr()).append(">");
    if (inline_ == &node) inline_ = nullptr;
    EndLine();
}

// The parser drops white space at the ends of a text, condenses it within, and drops texts of nothing else; references
// and CDATA sections it takes as they are.
void Writer::WriteText(const TiXmlText& text) {
    const std::string& value = text.ValueStr();
    const bool blank = value.find_first_not_of(" \t\n\v\f\r") == std::string::npos;
    const bool asCdata = (text.CDATA() || (blank && !value.empty())) && value.find("]]>") == std::string::npos &&
                         value.find('\r') == std::string::npos && value.find('\0') == std::string::npos;
    if (asCdata) {
        out_.append("<![CDATA[").append(value).append("]]>");
        return;
    }
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool bare = i > 0 && i + 1 < value.size() && !IsSpace(value[i - 1]);
        if (value[i] == ' ' && !bare) {
            out_ += "&#x20;";
        } else {
            Escape(value[i]);
        }
    }
}

void Writer::WriteComment(const std::string& text) {
    out_ += "<!--";
    for (std::size_t i = 0; i < text.size(); ++i) {
        out_ += text[i];
        if (text[i] == '-' && (i + 1 == text.size() || text[i + 1] == '-')) out_ += ' ';
    }
    out_ += "-->";
}

void Writer::WriteDeclaration(const TiXmlDeclaration& declaration) {
    out_ += "<?xml";
    if (*declaration.Version()) Attribute("version", declaration.Version());
    if (*declaration.Encoding()) Attribute("encoding", declaration.Encoding());
    if (*declaration.Standalone()) Attribute("standalone", declaration.Standalone());
    out_ += " ?>";
}

void Writer::Attribute(std::string_view name, const std::string& value) {
    out_.append(" ").append(name).append("=\"");
    Escape(value);
    out_ += '"';
}

void Writer::Escape(const std::string& text) {
    for (const char c : text)
        Escape(c);
}

void Writer::Escape(char c) {
    switch (c) {
        case '&':
            out_ += "&amp;";
            return;
        case '<':
            out_ += "&lt;";
            return;
        case '>':
            out_ += "&gt;";
            return;
        case '"':
            out_ += "&quot;";
            return;
        case '\'':
            out_ += "&apos;";
            return;
        default:
            break;
    }
    if (static_cast<unsigned char>(c) >= ' ') {
        out_ += c;
        return;
    }
    constexpr char kDigits[] = "0123456789ABCDEF";
    out_.append("&#x").append(1, kDigits[c >> 4]).append(1, kDigits[c & 15]).append(";");
}

void Writer::BeginLine() {
    if (inline_ || indent_.empty()) return;
    for (int i = 0; i < depth_; ++i)
        out_ += indent_;
}

void Writer::EndLine() {
    if (!inline_) out_ += lineBreak_;
}

}  // namespace

std::string WriteXml(const TiXmlNode& top, std::string_view indent, std::string_view lineBreak) {
    return Writer(top, indent, lineBreak).Write();
}

}  // namespace ticpp::detail
