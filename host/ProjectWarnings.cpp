#include "host/ProjectWarnings.h"

#include <occommonui/WarningReport.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

#include "host/DrawingPaths.h"

namespace ochost {
namespace {

struct WarningKind {
    const wchar_t* category;
    const wchar_t* discipline;  // code of the parts and drawings that it is about
    const wchar_t* text;        // of the part, its code, the room's number and name, and a figure
    int from;                   // the figure's range
    int to;
};

constexpr WarningKind kKinds[] = {
    {L"Air flow",     L"V", L"%s (%s) in room %s, %s: the air flow of %d l/s is more than the duct takes.",     60, 220},
    {L"Sound level",  L"V", L"%s (%s) in room %s, %s: the sound level of %d dB(A) is above the permitted one.", 34, 48 },
    {L"Connections",  L"H", L"%s (%s) in room %s, %s is not connected: the next pipe end is %d mm away.",       2,  90 },
    {L"Insulation",   L"H", L"%s (%s) in room %s, %s has no insulation; the series asks for %d mm.",            20, 60 },
    {L"Slope",        L"S", L"%s (%s) in room %s, %s falls by %d mm a metre only; the sewer needs 10 mm.",      1,  9  },
    {L"Cable routes", L"E", L"%s (%s) in room %s, %s: the route is filled to %d %%. Choose a larger size.",     81, 130},
};
static_assert(std::size(kKinds) == kWarningCategoryCount);

/// The parts and drawings that warnings of a discipline can be about.
struct Objects {
    std::vector<const PartType*> parts;
    std::map<Id, const Drawing*> drawings;  // by floor
};

template <class Record>
const Record& Pick(const std::vector<Record>& records, int number) {
    return records[static_cast<std::size_t>(number) % records.size()];
}

std::map<std::wstring, Objects> ByDiscipline(const ProjectContent& project) {
    std::map<Id, std::wstring> codes;
    for (const Discipline& discipline : project.disciplines)
        codes[discipline.id] = discipline.code;
    std::map<std::wstring, Objects> objects;
    for (const PartType& part : project.partTypes)
        objects[codes[part.discipline]].parts.push_back(&part);
    for (const Drawing& drawing : project.drawings)
        objects[codes[drawing.discipline]].drawings.emplace(drawing.floor, &drawing);
    // The sewers are in the drawings of the water supply.
    objects[L"S"].drawings = objects[L"W"].drawings;
    return objects;
}

class Warnings {
public:
    Warnings(const ProjectContent& project, const std::wstring& path)
        : project_(project), paths_(path, project.folders), objects_(ByDiscipline(project)) {}

    /// Whether there is something to warn about.
    bool CanBeRaised() const {
        return !project_.rooms.empty() && !project_.drawings.empty() &&
               std::all_of(std::begin(kKinds), std::end(kKinds), [&](const WarningKind& kind) {
                   const auto objects = objects_.find(kind.discipline);
                   return objects != objects_.end() && !objects->second.parts.empty();
               });
    }

    void Raise(int number, Lng::AppID app) const {
        const WarningKind& kind = kKinds[number % kWarningCategoryCount];
        const int round = number / kWarningCategoryCount;
        const Objects& objects = objects_.at(kind.discipline);
        const Room& room = Pick(project_.rooms, number * 37 + round);
        const PartType& part = *Pick(objects.parts, round * 89);
        ustr text;
        text.format(kind.text, part.name.c_str(), part.code.c_str(), room.number.c_str(), room.name.c_str(),
                    kind.from + number * 13 % (kind.to - kind.from + 1));
        const auto category = WarningReport::AddCategory(app, kind.category);
        WarningReport::Add(app, category, text, Place(number, room, objects));
    }

private:
    ObjPosInDwg Place(int number, const Room& room, const Objects& objects) const {
        ObjPosInDwg pos;
        const auto drawing = objects.drawings.find(room.floor);
        const Drawing& shown = drawing != objects.drawings.end() ? *drawing->second : project_.drawings.front();
        pos.drawing = std::wstring_view(paths_.Of(shown));
        pos.handle = 0x2A00 + static_cast<std::uint64_t>(number);
        pos.x = number * 830 % 61'000;
        pos.y = number * 470 % 24'000;
        pos.z = 2600;
        pos.hasPoint = true;
        return pos;
    }

    const ProjectContent& project_;
    const DrawingPaths paths_;
    const std::map<std::wstring, Objects> objects_;
};

}  // namespace

Status RaiseWarnings(const ProjectStore& project, Lng::AppID app) {
    const auto content = project.Content();
    if (!content) return content.Error();
    const Warnings warnings(*content, project.Path());
    if (!warnings.CanBeRaised()) {
        return Failure{FailureKind::BadInput, L"The project has no rooms, drawings or parts to warn about."};
    }
    WarningReport::Clear(app);
    for (int number = 0; number < kWarningCount; ++number)
        warnings.Raise(number, app);
    return Done{};
}

}  // namespace ochost
