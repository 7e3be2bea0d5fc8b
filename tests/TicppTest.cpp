#include <gtest/gtest.h>
#include <ticpp.h>
#include <windows.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>

#include "support/TestFolder.h"
#include "support/XmlFaults.h"

namespace {

constexpr char kBuilding[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<!-- <a> & \"quotes' --><building name='It&apos;s &quot;1&quot;' floors=\"3\">\n"
    "  <room id=\"1\" area=\"12.5\">P\xC3\xA4\xC3\xA4ovi</room><note/>\n"
    "  <room id=\"2\" area=\"0.1\"><![CDATA[a < b]]></room>\n"
    "</building>";

template <class Call>
std::string FailureOf(Call call) {
    try {
        call();
    } catch (const ticpp::Exception& exception) {
        EXPECT_EQ(exception.m_details, exception.what());
        return exception.m_details;
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

// An element with that value as its attribute and its text, written and read back.
ticpp::Element ThroughXml(const std::string& value) {
    ticpp::Element element("e");
    element.SetAttribute("v", value);
    element.SetText(value);
    element.InsertEndChild(ticpp::Element("after"));
    ticpp::Document document;
    document.Parse(element.AsXml());
    return *document.FirstChildElement();
}

// Callers hold look-ups by plain pointer, build on the stack or with new, and walk with iterators.
TEST(Callers, BuildADocument) {
    ticpp::Document doc("unused.xml");
    ticpp::Declaration decl("1.0", "utf-8", "");
    doc.LinkEndChild(&decl);
    ticpp::Element root("root");
    root.SetAttribute("Version", 20151101);
    doc.LinkEndChild(&root);
    ticpp::Element* made = new ticpp::Element("made");
    root.LinkEndChild(made);
    made->SetAttribute("text", std::string("x"));
    ticpp::Element copied("copied");
    ticpp::Node* inserted = root.InsertEndChild(copied);
    copied.SetAttribute("late", true);
    inserted->ToElement()->SetText(1.5);
    ticpp::Text text("tail");
    root.InsertEndChild(text);
    ticpp::Comment comment("done");
    doc.InsertEndChild(comment);

    std::ostringstream out;
    out << doc;
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"utf-8\" ?><root Version=\"20151101\"><made text=\"x\" />"
              "<copied>1.5</copied>tail</root><!--done-->");
    delete made;
    EXPECT_EQ(doc.FirstChildElement("root")->FirstChildElement("made")->GetAttribute("text"), "x");
}

TEST(Callers, ReadADocument) {
    ticpp::Document doc;
    doc.Parse(kBuilding);
    ticpp::Element* root = doc.FirstChildElement("building");
    int floors = 0;
    root->GetAttribute("floors", &floors);
    EXPECT_EQ(floors, 3);
    EXPECT_EQ(root->GetAttribute("name"), "It's \"1\"");

    int sum = 0;
    ticpp::Iterator<ticpp::Element> room("room");
    for (room = room.begin(root); room != room.end(); room++) {
        int id = 0;
        room->GetAttribute("id", &id);
        sum += id;
    }
    EXPECT_EQ(sum, 3);

    std::string names;
    ticpp::Iterator<ticpp::Attribute> attribute;
    for (attribute = attribute.begin(root); attribute != attribute.end(); ++attribute) {
        names += attribute->Name() + "=" + attribute->Value() + ";";
    }
    EXPECT_EQ(names, "name=It's \"1\";floors=3;");

    std::string values;
    for (ticpp::Node* child = root->FirstChild(false); child; child = child->NextSibling(false)) {
        values += child->Value() + ";";
    }
    EXPECT_EQ(values, "room;note;room;");
    EXPECT_EQ(root->FirstChildElement()->GetText(), "P\xC3\xA4\xC3\xA4ovi");
    EXPECT_EQ(root->LastChild()->ToElement()->GetText(), "a < b");
    EXPECT_EQ(root->FirstChildElement("note")->NextSiblingElement()->GetAttribute<int>("id"), 2);
    EXPECT_EQ(root->Row(), 2);
}

TEST(Callers, ReadWhatOtherProgramsWrite) {
    ticpp::Document doc;
    doc.Parse(
        "<?xml version='1.0' standalone='yes'?>\r\n<?xml-stylesheet href='a.xsl'?><!DOCTYPE r><?other thing?>"
        "<r a = \"x>y'\" b='<' c=bare d='&#xE4;&#228;&lt;' >  one\r\n  two  <x/></r ><!-- end -->\n");
    EXPECT_EQ(doc.FirstChild()->ToDeclaration()->Standalone(), "yes");
    const ticpp::Element* root = doc.FirstChildElement();
    EXPECT_EQ(root->GetAttribute("a"), "x>y'");
    EXPECT_EQ(root->GetAttribute("b"), "<");
    EXPECT_EQ(root->GetAttribute("c"), "bare");
    EXPECT_EQ(root->GetAttribute("d"), "\xC3\xA4\xC3\xA4<");
    EXPECT_EQ(root->GetText(), "one two");
    const std::string written = doc.AsXml();
    doc.Parse(written);
    EXPECT_EQ(doc.AsXml(), written);
}

TEST(LookUp, ThrowsOrTellsThatThereIsNothing) {
    ticpp::Document doc;
    doc.Parse("<root>\n <part id='7' bad='12x'/></root>");
    ticpp::Element* part = doc.FirstChildElement()->FirstChildElement("part");
    const std::string missing = FailureOf([&] { part->GetAttribute("name"); });
    EXPECT_NE(missing.find("\"name\""), std::string::npos) << missing;
    EXPECT_NE(missing.find("\"part\" (line 2)"), std::string::npos) << missing;
    const std::string bad = FailureOf([&] { part->GetAttribute<int>("bad"); });
    EXPECT_NE(bad.find("\"12x\""), std::string::npos) << bad;

    int value = 42;
    EXPECT_FALSE(part->GetAttribute("name", &value, false));
    EXPECT_THROW(part->GetAttribute("name", &value), ticpp::Exception);
    EXPECT_THROW(part->GetAttribute("bad", &value, false), ticpp::Exception);
    EXPECT_THROW(part->GetAttributeOrDefault("bad", &value, 1), ticpp::Exception);
    EXPECT_EQ(value, 42);
    part->GetAttributeOrDefault("name", &value, 5);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(part->GetAttributeOrDefault("name", "none"), "none");
    EXPECT_EQ(part->GetAttribute("name", false), "");

    EXPECT_THROW(part->GetText(), ticpp::Exception);
    EXPECT_EQ(part->GetTextOrDefault("none"), "none");
    EXPECT_EQ(part->FirstChild(false), nullptr);
    EXPECT_EQ(part->FirstChildElement("x", false), nullptr);
    EXPECT_EQ(part->NextSiblingElement(false), nullptr);
    EXPECT_THROW(part->FirstChildElement(), ticpp::Exception);
    EXPECT_THROW(part->FirstChildElement("x"), ticpp::Exception);
    EXPECT_THROW(part->NextSibling(), ticpp::Exception);
    EXPECT_THROW(part->ToText(), ticpp::Exception);
    EXPECT_THROW(doc.Parent(), ticpp::Exception);
    EXPECT_EQ(doc.Parent(false), nullptr);
    EXPECT_EQ(part->GetDocument(), doc.ToDocument());
    EXPECT_THROW(ticpp::Element("alone").GetDocument(), ticpp::Exception);
    EXPECT_THROW(ticpp::Attribute("a", "b").Next(), ticpp::Exception);
    EXPECT_EQ(ticpp::Attribute("a", "b").Previous(false), nullptr);
}

TEST(Iterators, KeepToTheirTypeAndName) {
    ticpp::Document doc;
    doc.Parse("<r x='1' y='2'><a/>text<b/><!--c--><a/><a/></r>");
    const ticpp::Element root = *doc.FirstChildElement();
    const auto count = [&](auto it) {
        int n = 0;
        for (it = it.begin(&root); it != it.end(); ++it)
            ++n;
        return n;
    };
    EXPECT_EQ(count(ticpp::Iterator<>()), 6);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Node>("a")), 3);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Element>()), 4);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Element>("b")), 1);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Text>()), 1);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Comment>()), 1);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Attribute>("y")), 1);
    EXPECT_EQ(count(ticpp::Iterator<ticpp::Element>("none")), 0);

    ticpp::Iterator<ticpp::Element> it(root.LastChild()->ToElement(), "a");
    --it;
    --it;
    EXPECT_EQ(it.Get(), root.FirstChild());
    EXPECT_EQ(it--, root.FirstChildElement());
    EXPECT_EQ(++it, it.end());
}

template <class T>
class Integers : public testing::Test {};
using IntegerTypes = testing::Types<signed char, unsigned char, short, unsigned short, int, unsigned, long,
                                    unsigned long, long long, unsigned long long>;
TYPED_TEST_SUITE(Integers, IntegerTypes);

TYPED_TEST(Integers, KeepTheirLimitsAndRefuseWhatIsBeyond) {
    using Limits = std::numeric_limits<TypeParam>;
    const auto read = [](const std::string& text) {
        ticpp::Element element("e");
        element.SetAttribute("v", text);
        return element.GetAttribute<TypeParam>("v");
    };
    for (const TypeParam value : {Limits::min(), TypeParam{0}, TypeParam{1}, Limits::max()}) {
        ticpp::Element element("e");
        element.SetAttribute("v", value);
        EXPECT_EQ(element.GetAttribute("v"), std::to_string(value));
        EXPECT_EQ(element.GetAttribute<TypeParam>("v"), value);
    }
    // One more than the largest is written by raising the last digit, which is never 9.
    std::string beyond = std::to_string(Limits::max());
    ++beyond.back();
    std::string below = Limits::min() == 0 ? "-1" : std::to_string(Limits::min());
    if (Limits::min() != 0) ++below.back();
    for (const std::string& text :
         {beyond, below, std::string("1 2"), std::string("1.0"), std::string("0x1"), std::string(""), std::string(" "),
          std::string("+-1"), std::string("++1"), std::string("99999999999999999999999")}) {
        EXPECT_THROW(read(text), ticpp::Exception) << text;
    }
    EXPECT_EQ(read(" \t+12\r\n"), TypeParam{12});
}

enum class Colour : unsigned char { kRed = 1, kBlue = 200 };

TEST(Conversions, OfTheOtherTypes) {
    ticpp::Element e("e");
    const auto through = [&](auto value) {
        e.SetAttribute("v", value);
        return e.GetAttribute<decltype(value)>("v");
    };
    EXPECT_TRUE(through(true));
    EXPECT_EQ(e.GetAttribute("v"), "1");
    EXPECT_FALSE(through(false));
    EXPECT_EQ(through(Colour::kBlue), Colour::kBlue);
    EXPECT_EQ(e.GetAttribute("v"), "200");
    EXPECT_EQ(through('x'), 'x');
    EXPECT_EQ(through(std::string(" a\tb ")), " a\tb ");
    e.SetAttribute("v", "true");
    EXPECT_TRUE(e.GetAttribute<bool>("v"));
    e.SetAttribute("v", "2");
    EXPECT_THROW(e.GetAttribute<bool>("v"), ticpp::Exception);
    e.SetAttribute("v", static_cast<const char*>(nullptr));
    EXPECT_EQ(e.GetAttribute("v"), "");
}

TEST(Conversions, OfFloatsAreShortestAndExactInEveryLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "German_Germany.1252"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    ticpp::Element e("e");
    const auto written = [&](auto value) {
        e.SetAttribute("v", value);
        EXPECT_EQ(e.GetAttribute<decltype(value)>("v"), value);
        return e.GetAttribute("v");
    };
    EXPECT_EQ(written(0.1f), "0.1");
    EXPECT_EQ(written(0.1), "0.1");
    EXPECT_EQ(written(2.0), "2");
    EXPECT_EQ(written(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(written(-1234.5f), "-1234.5");
    for (const double value : {std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min(), -0.0})
        written(value);
    written(std::numeric_limits<float>::max());
    written(std::numeric_limits<float>::denorm_min());
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        double value = 0;
        const auto bits = random();
        std::memcpy(&value, &bits, sizeof(value));
        if (std::isfinite(value)) written(value);
        if (std::isfinite(static_cast<float>(value))) written(static_cast<float>(value));
    }
    for (const char* text : {"0,5", "nan", "inf", "1e400", "1.5x", "", "1 000"}) {
        e.SetAttribute("v", text);
        EXPECT_THROW(e.GetAttribute<double>("v"), ticpp::Exception) << text;
    }
    e.SetAttribute("v", "1e39");
    EXPECT_THROW(e.GetAttribute<float>("v"), ticpp::Exception);
    e.SetAttribute("v", "kept");
    EXPECT_THROW(e.SetAttribute("v", std::nan("")), ticpp::Exception);
    EXPECT_THROW(e.SetAttribute("v", HUGE_VALF), ticpp::Exception);
    EXPECT_EQ(e.GetAttribute("v"), "kept");
    std::setlocale(LC_ALL, "C");
}

TEST(Ownership, CopiesKeepTheTree) {
    ticpp::Element kept;
    std::unique_ptr<ticpp::Node> clone;
    {
        ticpp::Document doc;
        doc.Parse(kBuilding);
        kept = *doc.FirstChildElement()->FirstChildElement("room");
        clone = doc.FirstChildElement()->Clone();
    }
    EXPECT_EQ(kept.GetAttribute<double>("area"), 12.5);
    EXPECT_EQ(kept.Parent()->Value(), "building");
    EXPECT_EQ(dynamic_cast<ticpp::Element&>(*clone).GetAttribute<int>("floors"), 3);
    EXPECT_EQ(clone->Parent(false), nullptr);
    EXPECT_EQ(clone->FirstChildElement("note", false)->NextSibling()->ToElement()->GetText(), "a < b");
}

TEST(Ownership, LookUpsOfOneNodeAreOnePointer) {
    ticpp::Document doc;
    doc.Parse(kBuilding);
    ticpp::Element* root = doc.FirstChildElement();
    const ticpp::Element copy = *root;
    EXPECT_EQ(copy.ToElement(), root);
    EXPECT_EQ(copy.FirstChild()->Parent(), root);
    EXPECT_EQ(root->FirstAttribute(), root->LastAttribute()->Previous());
    EXPECT_TRUE(copy == *root);
    EXPECT_FALSE(copy == *root->FirstChild());
    EXPECT_THROW(*root = *root->FirstChildElement(), ticpp::Exception);
}

TEST(Ownership, LinkedHandlesLiveWithTheDocument) {
    ticpp::Element outer("outer");
    ticpp::Element inner("inner");
    ticpp::Node* leaf = inner.InsertEndChild(ticpp::Element("leaf"));
    const ticpp::Element copyOfInner = inner;
    outer.LinkEndChild(&inner);
    {
        ticpp::Document doc;
        EXPECT_EQ(doc.LinkEndChild(&outer), outer.ToElement());
        EXPECT_EQ(leaf->GetDocument(), doc.ToDocument());
        EXPECT_THROW(doc.LinkEndChild(&outer), ticpp::Exception);
        EXPECT_THROW(outer.LinkEndChild(nullptr), ticpp::Exception);
        EXPECT_THROW(outer.LinkEndChild(&doc), ticpp::Exception);
    }
    EXPECT_EQ(copyOfInner.GetDocument()->FirstChildElement()->Value(), "outer");
    EXPECT_EQ(outer.Value(), "outer");
    ticpp::Element orphan("orphan");
    {
        ticpp::Document doc;
        doc.LinkEndChild(&orphan);
    }
    EXPECT_THROW(orphan.Value(), ticpp::Exception);
    const ticpp::Element copyOfOrphan = orphan;
    EXPECT_THROW(copyOfOrphan.Value(), ticpp::Exception);
    ticpp::Element alone("alone");
    EXPECT_THROW(alone.LinkEndChild(&alone), ticpp::Exception);
    ticpp::Text text("no parent");
    EXPECT_THROW(text.InsertEndChild(alone), ticpp::Exception);
}

TEST(Ownership, RemovedNodesThrow) {
    ticpp::Document doc;
    doc.Parse("<r><a x='1'><b y='2'/></a><c/></r>");
    ticpp::Element* root = doc.FirstChildElement();
    ticpp::Element* a = root->FirstChildElement("a");
    ticpp::Element* b = a->FirstChildElement();
    const ticpp::Element copy = *b;
    ticpp::Attribute* y = b->FirstAttribute();
    ticpp::Attribute* x = a->FirstAttribute();
    a->RemoveAttribute("x");
    a->RemoveAttribute("x");
    EXPECT_THROW(x->Value(), ticpp::Exception);
    EXPECT_THROW(root->RemoveChild(b), ticpp::Exception);
    root->RemoveChild(a);
    EXPECT_THROW(a->Value(), ticpp::Exception);
    EXPECT_THROW(copy.GetAttribute("y"), ticpp::Exception);
    EXPECT_THROW(y->Value(), ticpp::Exception);
    EXPECT_EQ(doc.AsXml("", ""), "<r><c /></r>");
    root->ReplaceChild(root->FirstChild(), ticpp::Element("d"));
    root->InsertBeforeChild(root->FirstChild(), *root);
    root->InsertAfterChild(root->FirstChild(), ticpp::Comment("--"));
    EXPECT_EQ(doc.AsXml("", ""), "<r><r><d /></r><!--- - --><d /></r>");
    doc.Clear();
    EXPECT_THROW(root->Value(), ticpp::Exception);
    EXPECT_TRUE(doc.NoChildren());
}

TEST(Ownership, DepthOfABuiltTreeIsNoMatter) {
    constexpr int kDeep = 200000;
    ticpp::Element bottom("e");
    ticpp::Element top = bottom;
    for (int i = 0; i < kDeep; ++i) {
        ticpp::Element parent("e");
        parent.LinkEndChild(top.ToElement());
        top = *parent.ToElement();
    }
    const std::unique_ptr<ticpp::Node> copy = top.Clone();
    EXPECT_EQ(copy->AsXml("", "").size(), kDeep * std::string("<e></e>").size() + std::string("<e />").size());
    EXPECT_THROW(ticpp::Document().Parse(copy->AsXml("", "")), ticpp::Exception);
}

TEST(Writing, ValuesSurvive) {
    std::string controls;
    for (char c = 1; c < 32; ++c)
        controls += c;
    const std::string values[] = {"\"'<>&",
                                  "&amp;",
                                  "&#x41;",
                                  "]]>",
                                  " a  b ",
                                  "   ",
                                  "\r\n\t",
                                  "a\nb\r",
                                  "\xF0\x9F\x94\xA7\xC3\xA4",
                                  "\xED\xA0\x80",
                                  controls,
                                  "\x7F\xC2\x80",
                                  std::string("a\0b", 3)};
    for (const std::string& value : values) {
        const ticpp::Element read = ThroughXml(value);
        EXPECT_EQ(read.GetAttribute("v"), value);
        if (value.find('\r') == std::string::npos || value.find_first_not_of(" \t\r\n") != std::string::npos) {
            EXPECT_EQ(read.GetText(), value);
        }
    }
    // No UTF-8, so read byte for byte.
    EXPECT_EQ(ThroughXml("\xE4\"\xC3").GetAttribute("v"), "\xE4\"\xC3");
}

TEST(Writing, IndentsButNeverWithinText) {
    ticpp::Document doc;
    doc.Parse("<r><a><b x='1'/></a><p>one <i>two</i> three</p><![CDATA[x]]></r>");
    EXPECT_EQ(doc.FirstChildElement()->FirstChildElement("a")->AsXml("\t", "\n"), "<a>\n\t<b x=\"1\" />\n</a>\n");
    doc.Parse("<r><p>one<i>two</i></p><q/></r>");
    EXPECT_EQ(doc.AsXml(), "<r>\n    <p>one<i>two</i></p>\n    <q />\n</r>\n");
}

TEST(HostileInput, TruncatedAtEveryLength) {
    for (const std::string& xml : Truncated(kBuilding)) {
        ticpp::Document doc;
        EXPECT_THROW(doc.Parse(xml), ticpp::Exception) << xml.size();
        EXPECT_TRUE(doc.NoChildren()) << xml.size();
    }
}

TEST(HostileInput, IsRefused) {
    for (const char* xml : {"", " ", "text", "<a/>text", "</a>", "<a></b>", "<a></a></a>", "<a x='1' x='2'/>",
                            "<a x=1\"/>", "<a x/>", "<a/", "<a/ >", "<a><!-- ></a>", "<?xml version='>", "<a>&#;</a>",
                            "<a>&#x1g;</a>", "<a>&#x110000;</a>", "<a b='&#4294967361;'/>", "\xFF\xFE<\0a\0"}) {
        ticpp::Document doc;
        EXPECT_THROW(doc.Parse(xml), ticpp::Exception) << xml;
        EXPECT_NO_THROW(doc.Parse(xml, false)) << xml;
        EXPECT_TRUE(doc.NoChildren()) << xml;
    }
    const std::string details = FailureOf([] { ticpp::Document("name").Parse("<a>\n<b x=></c>"); });
    EXPECT_EQ(details.find("the document \"name\": line 2"), 0u) << details;
}

// How deep the elements go along the last ones.
int DepthOf(const ticpp::Node& node) {
    int depth = 0;
    for (const ticpp::Node* last = &node; (last = last->LastChild(false)); ++depth)
        continue;
    return depth;
}

// Depth hidden from a reader that takes another view of where a comment, value or tag ends.
TEST(HostileInput, CannotHideItsDepth) {
    const std::string deep = Nested("a", 100'000);
    const char* const wraps[][2] = {
        {"",                           ""           },
        {"<a b='>'>",                  "</a>"       },
        {"<?xml x=\"a version='y'?>",  "<b c='?>'/>"},
        {"<?xml version=\"><!--\" ?>", "<!-- -->"   },
        {"<?xml x='>",                 "'?>"        },
        {"<a>&#<!--#1;",               "--></a>"    },
        {"<a b='&#'#1;'>",             "</a>"       },
        {"<a b=\xE4'c>'>",             "</a>"       },
        {"<!DOCTYPE a [<!ELEMENT b '", "'>]><a/>"   },
        {"<a b=<!-->",                 "--></a>"    },
        {"<a><![cdata[",               "]]></a>"    },
        {"<!-->",                      "-->"        },
    };
    for (const auto& [before, after] : wraps) {
        ticpp::Document doc;
        doc.Parse(before + deep + after, false);
        EXPECT_LE(DepthOf(doc), ticpp::kMaxDepth) << before;
    }
    EXPECT_NE(FailureOf([&] { ticpp::Document().Parse(deep); }).find("too deep"), std::string::npos);
}

TEST(HostileInput, LimitsAreExact) {
    EXPECT_NO_THROW(ticpp::Document().Parse(Nested("a", ticpp::kMaxDepth)));
    EXPECT_NO_THROW(ticpp::Document().Parse(Nested("a", ticpp::kMaxDepth - 1, "<b/><b/>")));
    EXPECT_THROW(ticpp::Document().Parse(Nested("a", ticpp::kMaxDepth + 1)), ticpp::Exception);
    EXPECT_THROW(ticpp::Document().Parse(Nested("a", ticpp::kMaxDepth, "<b/>")), ticpp::Exception);
    std::string attributes;
    for (int i = 0; i < ticpp::kMaxAttributes; ++i)
        attributes += " a" + std::to_string(i) + "='1'";
    EXPECT_NO_THROW(ticpp::Document().Parse("<e" + attributes + "/>"));
    EXPECT_THROW(ticpp::Document().Parse("<e b='2'" + attributes + "/>"), ticpp::Exception);
}

TEST(HostileInput, TheDeepestDocumentNeedsLittleStack) {
    const auto parse = [](void* passed) -> DWORD {
        ticpp::Document().Parse(Nested("a", ticpp::kMaxDepth));
        *static_cast<bool*>(passed) = true;
        return 0;
    };
    bool passed = false;
    HANDLE thread =
        CreateThread(nullptr, std::size_t{256} * 1024, parse, &passed, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(thread, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_TRUE(passed);
}

TEST(HostileInput, RandomMutationsParseOrThrow) {
    XmlMutator mutate(7);
    int parsed = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string xml = mutate(kBuilding);
        ticpp::Document doc;
        try {
            doc.Parse(xml);
            ++parsed;
        } catch (const ticpp::Exception&) {
            EXPECT_TRUE(doc.NoChildren());
            continue;
        }
        const std::string written = doc.AsXml("", "");
        doc.Parse(written);
        EXPECT_EQ(doc.AsXml("", ""), written) << xml;
    }
    EXPECT_GT(parsed, 1000);
}

class Files : public testing::Test {
protected:
    std::string Name(const wchar_t* file) const {
        const std::u8string name = (folder_.Path() / file).u8string();
        return {name.begin(), name.end()};
    }
    std::string Content(const wchar_t* file) const { return BytesOf(folder_.File(file)); }
    void Write(const wchar_t* file, const std::string& content) const { WriteBytes(folder_.File(file), content); }
    std::ptrdiff_t Count() const { return std::distance(std::filesystem::directory_iterator(folder_.Path()), {}); }

    const TestFolder folder_;
};

TEST_F(Files, AreWrittenWholeAndReadBack) {
    const std::string name = Name(L"file.xml");
    ticpp::Document doc(name);
    doc.InsertEndChild(ticpp::Declaration("1.0", "utf-8", ""));
    doc.InsertEndChild(ticpp::Element("root"))->ToElement()->SetText("a\r\nb");
    Write(L"file.xml", std::string(1000, 'x'));
    doc.SaveFile();
    EXPECT_EQ(Content(L"file.xml"), "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\r\n<root>a&#x0D;&#x0A;b</root>\r\n");
    EXPECT_EQ(Count(), 1);
    ticpp::Document read(name);
    read.LoadFile();
    EXPECT_EQ(read.FirstChildElement("root")->GetText(), "a\r\nb");
    read.LoadFile(name);
    EXPECT_EQ(read.Value(), name);
}

TEST_F(Files, ByteOrderMarkAndLineEndsAreRead) {
    Write(L"bom.xml", "\xEF\xBB\xBF<r a='1\r\n2\r3'/>\r\n");
    ticpp::Document doc;
    doc.LoadFile(Name(L"bom.xml"));
    EXPECT_EQ(doc.FirstChildElement()->GetAttribute("a"), "1\n2\n3");
}

TEST_F(Files, ThatCannotBeReadThrowAndLeaveTheDocumentEmpty) {
    ticpp::Document doc;
    doc.Parse("<old/>");
    Write(L"bad.xml", "<root>");
    Write(L"empty.xml", "");
    for (const char* file : {"missing.xml", "bad.xml", "empty.xml", ".", "no\xFFname", "nul\\?.xml"}) {
        const std::string details = FailureOf([&] { doc.LoadFile(Name(L"") + file); });
        EXPECT_TRUE(doc.NoChildren());
        EXPECT_NE(details.find(file), std::string::npos) << details;
    }
    EXPECT_THROW(doc.LoadFile(""), ticpp::Exception);
}

TEST_F(Files, ThatCannotBeWrittenStayAsTheyWere) {
    ticpp::Document doc;
    doc.Parse("<new/>");
    std::filesystem::create_directory(folder_.Path() / "folder");
    EXPECT_THROW(doc.SaveFile(Name(L"folder")), ticpp::Exception);
    EXPECT_TRUE(std::filesystem::is_directory(folder_.Path() / "folder"));
    EXPECT_THROW(doc.SaveFile(Name(L"none/file.xml")), ticpp::Exception);
    EXPECT_THROW(doc.SaveFile(), ticpp::Exception);

    Write(L"open.xml", "old");
    HANDLE file = CreateFileW(folder_.File(L"open.xml").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    EXPECT_THROW(doc.SaveFile(Name(L"open.xml")), ticpp::Exception);
    CloseHandle(file);
    EXPECT_EQ(Content(L"open.xml"), "old");
    EXPECT_EQ(Count(), 2);
}

}  // namespace
