#pragma once

#include <occommonui/ObjectSelection.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

/// A host of object selections with a small project: what it was asked is recorded, and a test changes what it has.
struct SelectionHost {
    using Message = ObjectSelection::Dlg::CbMsgId;
    struct Asked {
        Message message;
        std::uint64_t wParam;
        std::int64_t lParam;
        bool operator==(const Asked&) const = default;
    };
    /// Answers a message in place of the host.
    using Answer = std::function<std::int64_t(std::uint64_t wParam, std::int64_t lParam)>;

    std::vector<Asked> asked;
    std::vector<std::pair<Message, Answer>> answers;  ///< the last one for a message counts

    std::vector<ObjectSelection::Dlg::DrawingEntry> drawings = Drawings();
    TREE_INSERTLIST rooms = Tree(L"Floor", {L"Hall", L"Kitchen"}, 11);
    TREE_INSERTLIST zones = Tree(L"Building", {L"Fire zone", L"Air zone"}, 21);
    TREE_INSERTLIST systems = Tree(L"Supply air", {L"TK01", L"TK02"}, 31);
    TREE_INSERTLIST series = Tree(L"Round", {L"Series A", L"Series B"}, 41);
    TREE_INSERTLIST partTypes = Tree(L"Ducts", {L"Round duct", L"Bend"}, 51);
    std::vector<ObjectSelection::RecordData> configurations;

    ObjectSelection::Dlg::Callback Callback() {
        return [this](Message message, std::uint64_t wParam, std::int64_t lParam) {
            asked.push_back({message, wParam, lParam});
            return AnswerTo(message, wParam, lParam);
        };
    }

    void On(Message message, Answer answer) { answers.emplace_back(message, std::move(answer)); }
    void Answers(Message message, std::int64_t result) {
        On(message, [result](std::uint64_t, std::int64_t) { return result; });
    }
    void Throws(Message message) {
        On(message, [](std::uint64_t, std::int64_t) -> std::int64_t { throw std::runtime_error("host"); });
    }

    int Count(Message message) const {
        return static_cast<int>(
            std::count_if(asked.begin(), asked.end(), [&](const Asked& a) { return a.message == message; }));
    }
    /// The messages asked, of those given, in order.
    std::vector<Message> Order(const std::vector<Message>& of) const {
        std::vector<Message> order;
        for (const Asked& a : asked) {
            if (std::find(of.begin(), of.end(), a.message) != of.end()) order.push_back(a.message);
        }
        return order;
    }

    /// A heading with items of the ids from `id` on.
    static TREE_INSERTLIST Tree(const wchar_t* heading, const std::vector<const wchar_t*>& items, std::int64_t id) {
        TREE_INSERTLIST list;
        list.push_back(0, 0, Lng::Hpv, -1, ustr(heading));
        for (const wchar_t* const item : items)
            list.push_back(1, id++, Lng::Hpv, -1, ustr(item));
        return list;
    }

    static std::vector<ObjectSelection::Dlg::DrawingEntry> Drawings() {
        std::vector<ObjectSelection::Dlg::DrawingEntry> drawings(2);
        drawings[0].drawing = {1, L"C:\\Project\\Floor1.dwg"};
        drawings[0].title = L"First floor";
        drawings[0].layouts = {L"A1", L"A3"};
        drawings[0].selectionAreas = {L"North"};
        drawings[1].drawing = {2, L"C:\\Project\\Cellar\\Cellar.dwg"};
        drawings[1].title = L"Cellar";
        drawings[1].layouts = {L"Cellar A1"};
        return drawings;
    }

private:
    template <class T>
    static T& As(auto pointer) {
        return *reinterpret_cast<T*>(pointer);
    }

    ObjectSelection::RecordData* Find(const astr& key) {
        for (ObjectSelection::RecordData& record : configurations) {
            if (record.key == key) return &record;
        }
        return nullptr;
    }

    std::int64_t AnswerTo(Message message, std::uint64_t wParam, std::int64_t lParam) {
        for (auto at = answers.rbegin(); at != answers.rend(); ++at) {
            if (at->first == message) return at->second(wParam, lParam);
        }
        using namespace ObjectSelection::Dlg;
        switch (message) {
            case LoadConfiguration:
            case SaveConfiguration:
            case DeleteConfiguration:
            case RenameConfiguration:
            case GetConfigurations:
                return AnswerOnConfigurations(message, wParam, lParam);
            case GetDrawings:
                As<std::vector<DrawingEntry>>(lParam) = drawings;
                return 0;
            case GetCurrentDrawing:
                if (!drawings.empty()) As<ustr_pre<260>>(lParam) = drawings[0].drawing.path;
                return 0;
            case HasSelectionAreas:
            case HasPages:
            case HasSwitchboardAreas:
            case HasHostAreas:
            case HasRooms:
                return 1;
            default:
                FillTree(message, lParam);
                return 0;
        }
    }

    void FillTree(Message message, std::int64_t lParam) {
        using namespace ObjectSelection::Dlg;
        const std::pair<Message, const TREE_INSERTLIST*> trees[] = {
            {GetRooms,           &rooms    },
            {GetFunctionalZones, &zones    },
            {GetSystems,         &systems  },
            {GetFittingSeries,   &series   },
            {GetPartTypes,       &partTypes}
        };
        for (const auto& [id, list] : trees) {
            if (id == message) As<TREE_INSERTLIST>(lParam) = *list;
        }
    }

    std::int64_t AnswerOnConfigurations(Message message, std::uint64_t wParam, std::int64_t lParam) {
        using namespace ObjectSelection;
        if (message == Dlg::GetConfigurations) {
            for (const RecordData& record : configurations)
                As<std::vector<PresetEntry>>(wParam).push_back({record.key, record.name});
            return 0;
        }
        if (message == Dlg::SaveConfiguration) return Save(As<RecordData>(wParam));
        if (message == Dlg::LoadConfiguration) {
            RecordData& record = As<RecordData>(wParam);
            if (const RecordData* const stored = Find(record.key)) record = *stored;
            return 0;
        }
        RecordData* const record = Find(reinterpret_cast<const char*>(wParam));
        if (!record) return 1;
        if (message == Dlg::RenameConfiguration) {
            record->name = reinterpret_cast<const wchar_t*>(lParam);
        } else {
            configurations.erase(configurations.begin() + (record - configurations.data()));
        }
        return 0;
    }

    std::int64_t Save(ObjectSelection::RecordData& record) {
        const std::string number = std::to_string(configurations.size() + 1);
        if (record.key.empty()) record.key = std::string_view(std::string("K").append(number));
        if (ObjectSelection::RecordData* const stored = Find(record.key)) {
            *stored = record;
        } else {
            configurations.push_back(record);
        }
        return 0;
    }
};
