#include "host/selection/ObjectValues.h"

#include <windows.h>

#include <orvatool/String.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cwchar>
#include <iterator>
#include <unordered_set>

namespace ochost {
namespace {

using ObjectSelection::Dlg::ValueEntry;

/// An object with the records that it refers to; every record has one of each kind, of which some are empty.
struct Subject {
    const ProjectIndex& project;
    const PlacedObject& object;

    template <class R>
    static const R& OrEmpty(const R* record) {
        static const R empty;
        return record ? *record : empty;
    }
    const Room& InRoom() const { return OrEmpty(project.rooms[object.room]); }
    const Zone& InZone() const { return OrEmpty(project.zones[InRoom().zone]); }
    const Drawing& InDrawing() const { return OrEmpty(project.drawings[object.drawing]); }
    const Floor& OnFloor() const { return OrEmpty(project.floors[InDrawing().floor]); }
    const PartType& Part() const { return OrEmpty(project.partTypes[object.partType]); }
    const System& InSystem() const { return OrEmpty(project.systems[object.system]); }
    const Discipline& OfDiscipline() const { return OrEmpty(project.disciplines[Part().discipline]); }
    const std::wstring& AreaName(Id area) const { return OrEmpty(project.areas[area]).name; }
    bool Has(const wchar_t* disciplines) const {
        return !OfDiscipline().code.empty() && std::wcschr(disciplines, OfDiscipline().code.front());
    }
};

/// At most two decimals, with a point.
std::wstring Number(double value) {
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed, 2).ptr;
    std::wstring text(digits.begin(), end);
    while (text.back() == L'0')
        text.pop_back();
    if (text.back() == L'.') text.pop_back();
    return text;
}

std::wstring NumberIf(bool has, double value) {
    return has ? Number(value) : std::wstring();
}

std::wstring NumberOrNone(double value, bool has = true) {
    return NumberIf(has && value != 0, value);
}

/// The number that a text begins with; 0 for none.
double LeadingNumber(std::wstring_view text) {
    const std::string narrow(text.begin(), std::find_if(text.begin(), text.end(), [](wchar_t c) { return c > 126; }));
    double number = 0;
    std::from_chars(narrow.data(), narrow.data() + narrow.size(), number);
    return number;
}

bool IsRound(const std::wstring& size) {
    return !size.empty() && size.find_first_not_of(L"0123456789") == size.npos;
}

/// "400x200": its width (0) or height (1).
std::wstring Side(const std::wstring& size, int side) {
    const std::size_t cross = size.find(L'x');
    if (cross == size.npos) return {};
    return NumberOrNone(LeadingNumber(side == 0 ? size : size.substr(cross + 1)));
}

struct Known {
    std::int32_t property;
    std::wstring (*value)(const Subject&);
};

/// What the project knows of its objects, by property.
constexpr Known kKnown[] = {
    {1,   [](const Subject& s) { return s.Part().code; }                                               },
    {2,   [](const Subject& s) { return s.Part().name; }                                               },
    {4,   [](const Subject& s) { return std::to_wstring(s.object.number); }                            },
    {5,   [](const Subject& s) { return s.InSystem().code + L"-" + std::to_wstring(s.object.number); } },
    {14,  [](const Subject& s) { return s.InSystem().code; }                                           },
    {15,  [](const Subject& s) { return s.InSystem().name; }                                           },
    {17,  [](const Subject& s) { return s.OfDiscipline().name; }                                       },
    {18,  [](const Subject& s) { return s.InSystem().medium; }                                         },
    {28,  [](const Subject& s) { return s.OnFloor().building; }                                        },
    {29,  [](const Subject& s) { return s.OnFloor().name; }                                            },
    {30,  [](const Subject& s) { return s.OnFloor().code; }                                            },
    {31,  [](const Subject& s) { return s.InRoom().number; }                                           },
    {32,  [](const Subject& s) { return s.InRoom().name; }                                             },
    {33,  [](const Subject& s) { return NumberOrNone(s.InRoom().area); }                               },
    {34,  [](const Subject& s) { return NumberOrNone(s.InRoom().height); }                             },
    {35,  [](const Subject& s) { return s.InZone().number; }                                           },
    {36,  [](const Subject& s) { return s.InZone().name; }                                             },
    {37,  [](const Subject& s) { return s.InDrawing().fileName; }                                      },
    {38,  [](const Subject& s) { return s.InDrawing().title; }                                         },
    {39,  [](const Subject& s) { return Subject::OrEmpty(s.project.layouts[s.object.layout]).name; }   },
    {40,  [](const Subject& s) { return s.AreaName(s.object.hostArea); }                               },
    {41,  [](const Subject& s) { return s.AreaName(s.object.selectionArea); }                          },
    {42,  [](const Subject& s) { return s.AreaName(s.object.page); }                                   },
    {43,  [](const Subject& s) { return s.AreaName(s.object.switchboardArea); }                        },
    {46,  [](const Subject& s) { return Number(s.object.x); }                                          },
    {47,  [](const Subject& s) { return Number(s.object.y); }                                          },
    {48,  [](const Subject& s) { return Number(s.object.z); }                                          },
    {53,  [](const Subject& s) { return Number(s.OnFloor().elevation); }                               },
    {54,  [](const Subject& s) { return NumberOrNone(s.object.length); }                               },
    {55,  [](const Subject& s) { return Side(s.Part().size, 0); }                                      },
    {56,  [](const Subject& s) { return Side(s.Part().size, 1); }                                      },
    {58,  [](const Subject& s) { return IsRound(s.Part().size) ? s.Part().size : std::wstring(); }     },
    {69,  [](const Subject& s) { return s.Part().size; }                                               },
    {79,  [](const Subject& s) { return s.Part().size; }                                               },
    {99,  [](const Subject& s) { return NumberOrNone(s.object.load, s.Has(L"V")); }                    },
    {100, [](const Subject& s) { return NumberOrNone(s.object.load * 3.6, s.Has(L"V")); }              },
    {111, [](const Subject& s) { return NumberOrNone(s.object.load, s.Has(L"WS")); }                   },
    {124, [](const Subject& s) { return NumberOrNone(s.object.load, s.Has(L"H")); }                    },
    {125, [](const Subject& s) { return NumberOrNone(s.object.load, s.Has(L"C")); }                    },
    {131, [](const Subject& s) { return NumberIf(s.object.room != 0, s.InRoom().temperature); }        },
    {142, [](const Subject& s) { return s.Has(L"E") ? Number(s.object.load) + L" W" : std::wstring(); }},
    {151, [](const Subject& s) { return s.AreaName(s.object.switchboardArea); }                        },
    {211, [](const Subject& s) { return s.Part().manufacturer; }                                       },
    {213, [](const Subject& s) { return s.Part().code; }                                               },
    {214, [](const Subject& s) { return SeriesOf(s.Part()); }                                          },
    {222, [](const Subject& s) { return Number(s.object.length > 0 ? s.object.length / 1000.0 : 1); }  },
};

const Known* FindKnown(std::int32_t property) {
    const auto found = std::lower_bound(std::begin(kKnown), std::end(kKnown), property,
                                        [](const Known& known, std::int32_t id) { return known.property < id; });
    return found != std::end(kKnown) && found->property == property ? found : nullptr;
}

/// Properties that make sense for some disciplines only, by their group.
struct Scope {
    const wchar_t* group;
    const wchar_t* disciplines;
};

constexpr Scope kScopes[] = {
    {L"Air",                 L"V"   },
    {L"Acoustics",           L"V"   },
    {L"Octave bands",        L"V"   },
    {L"Water",               L"HCWS"},
    {L"Heating and cooling", L"HC"  },
    {L"Insulation",          L"VHCW"},
    {L"Electrical",          L"E"   },
    {L"Circuit",             L"E"   },
    {L"Lighting",            L"E"   },
    {L"Signals",             L"E"   },
};

bool MakesSense(const Subject& subject, const Property& property) {
    const std::wstring& group = Subject::OrEmpty(subject.project.propertyGroups[property.group]).name;
    const auto scope =
        std::find_if(std::begin(kScopes), std::end(kScopes), [&](const Scope& row) { return group == row.group; });
    return scope == std::end(kScopes) || subject.Has(scope->disciplines);
}

/// Like a random number, but the same for the same object and property.
std::uint64_t Draw(Id object, std::int32_t property) {
    std::uint64_t mixed =
        static_cast<std::uint64_t>(object) * 0x9E3779B97F4A7C15 + static_cast<std::uint64_t>(property);
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9;
    return mixed ^ (mixed >> 31);
}

/// A value like the property's sample.
std::wstring Drawn(const PlacedObject& object, const Property& property) {
    const std::uint64_t draw = Draw(object.id, property.id);
    const double scaled = LeadingNumber(property.sample) * (0.5 + static_cast<double>(draw % 101) / 100);
    switch (property.type) {
        case ValueType::Choice:
            return property.choices.empty() ? std::wstring() : property.choices[draw % property.choices.size()];
        case ValueType::Boolean:
            return draw % 2 ? L"1" : L"0";
        case ValueType::Integer:
            return Number(std::round(scaled));
        case ValueType::Real:
            return Number(scaled);
        case ValueType::Text:
            break;
    }
    return property.sample;
}

/// The user's decimal separator in place of the point.
std::wstring Localised(std::wstring number) {
    std::array<wchar_t, 4> separator{};
    GetLocaleInfoEx(LOCALE_NAME_USER_DEFAULT, LOCALE_SDECIMAL, separator.data(), static_cast<int>(separator.size()));
    if (const std::size_t point = number.find(L'.'); point != number.npos) number.replace(point, 1, separator.data());
    return number;
}

std::vector<std::wstring> ValuesInUse(const ProjectIndex& project, const Property& property) {
    std::unordered_set<std::wstring> used;
    for (const PlacedObject& object : project.content.objects) {
        std::wstring value = ValueOf(project, object, property);
        if (!value.empty()) used.insert(std::move(value));
    }
    std::vector<std::wstring> values(used.begin(), used.end());
    std::sort(values.begin(), values.end(),
              [](const std::wstring& a, const std::wstring& b) { return String::CompareForUser(a, b) < 0; });
    return values;
}

}  // namespace

ObjectSelection::Dlg::PropertyKind KindOf(const Property& property) {
    switch (property.type) {
        case ValueType::Integer:
        case ValueType::Real:
            return ObjectSelection::Dlg::NumberValue;
        case ValueType::Boolean:
        case ValueType::Choice:
            return ObjectSelection::Dlg::ChoiceValue;
        case ValueType::Text:
            break;
    }
    return ObjectSelection::Dlg::TextValue;
}

std::wstring ValueOf(const ProjectIndex& project, const PlacedObject& object, const Property& property) {
    const Subject subject{project, object};
    if (const Known* known = FindKnown(property.id)) return known->value(subject);
    return MakesSense(subject, property) ? Drawn(object, property) : std::wstring();
}

std::wstring ValueText(const Property& property, std::wstring_view value) {
    if (value.empty()) return {};
    if (property.type == ValueType::Boolean) return value == L"1" ? L"Yes" : L"No";
    std::wstring text(value);
    if (KindOf(property) != ObjectSelection::Dlg::NumberValue) return text;
    text = Localised(std::move(text));
    if (property.unit == L"°") return text + property.unit;
    return property.unit.empty() ? text : text + L" " + property.unit;
}

std::vector<ValueEntry> ValuesOf(const ProjectIndex& project, const Property& property) {
    std::vector<std::wstring> values = property.choices;
    if (property.type == ValueType::Boolean) values = {L"1", L"0"};
    if (property.type == ValueType::Text) values = ValuesInUse(project, property);
    std::vector<ValueEntry> entries;
    entries.reserve(values.size());
    for (const std::wstring& value : values) {
        ValueEntry& entry = entries.emplace_back();
        entry.value = std::wstring_view(value);
        if (const std::wstring text = ValueText(property, value); text != value) entry.text = std::wstring_view(text);
    }
    return entries;
}

}  // namespace ochost
