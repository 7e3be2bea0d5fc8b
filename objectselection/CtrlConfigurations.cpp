#include "CtrlImpl.h"

#include <orvatool/AskValueDlg.h>

#include <algorithm>
#include <utility>

#include "CommonTexts.h"

namespace ObjectSelection::Dlg {
namespace {

constexpr std::size_t kNameLimit = 1023;

// Where the list of configurations stood when a selection was last read; for the next opening.
int rememberedConfiguration = CB_ERR;

}  // namespace

// A host that throws leaves the list as it is known.
void Ctrl::Impl::RefillConfigurations() {
    std::vector<PresetEntry> presets;
    if (state_.host.TryAsk(GetConfigurations, HostCallback::WParam(&presets))) state_.presets = std::move(presets);
    ShowConfigurations();
}

void Ctrl::Impl::ShowConfigurations() {
    const HWND combo = Control(kConfiguration);
    SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    for (std::size_t i = 0; i < state_.presets.size(); ++i) {
        const PresetEntry& preset = state_.presets[i];
        const bool current = !preset.key.empty() && preset.key == state_.record.key;
        AddConfiguration(i, current);
    }
}

void Ctrl::Impl::AddConfiguration(std::size_t index, bool select) {
    const HWND combo = Control(kConfiguration);
    const auto text = reinterpret_cast<LPARAM>(state_.presets[index].name.c_str());
    const auto row = static_cast<WPARAM>(SendMessageW(combo, CB_ADDSTRING, 0, text));
    SendMessageW(combo, CB_SETITEMDATA, row, static_cast<LPARAM>(index));
    if (select) SendMessageW(combo, CB_SETCURSEL, row, 0);
}

void Ctrl::Impl::SelectRemembered() {
    if (SelectedConfiguration() >= 0 || rememberedConfiguration < 0) return;
    SendMessageW(Control(kConfiguration), CB_SETCURSEL, static_cast<WPARAM>(rememberedConfiguration), 0);
}

void Ctrl::Impl::RememberSelected() const {
    const HWND combo = Control(kConfiguration);
    if (combo) rememberedConfiguration = static_cast<int>(SendMessageW(combo, CB_GETCURSEL, 0, 0));
}

// The place in the list of presets, -1 for none.
int Ctrl::Impl::SelectedConfiguration() const {
    const HWND combo = Control(kConfiguration);
    const LRESULT row = combo ? SendMessageW(combo, CB_GETCURSEL, 0, 0) : CB_ERR;
    if (row == CB_ERR) return -1;
    const LRESULT index = SendMessageW(combo, CB_GETITEMDATA, static_cast<WPARAM>(row), 0);
    return index >= 0 && index < static_cast<LRESULT>(state_.presets.size()) ? static_cast<int>(index) : -1;
}

// When the host throws the record stays the configuration that it was, and the controls keep what they have: under the
// key of another it would be saved over that one.
void Ctrl::Impl::ChooseConfiguration() {
    const int selected = SelectedConfiguration();
    if (selected < 0) return;
    const RecordData before = state_.record;
    state_.record.key = state_.presets[static_cast<std::size_t>(selected)].key;
    if (state_.host.TryAsk(LoadConfiguration, HostCallback::WParam(&state_.record))) {
        Data2Ctrls();
    } else {
        state_.record = before;
        ShowConfigurations();
        EnableDisableCtrls(EnableAll);
    }
}

void Ctrl::Impl::Save() {
    if (state_.record.key.empty()) return SaveAs();
    Ctrls2Data();
    state_.host.AskFor(state_.record, SaveConfiguration, HostCallback::WParam(&state_.record), 0);
}

// A host that gives no key has not stored it: then the record is the configuration that it was.
void Ctrl::Impl::SaveAs() {
    ustr name = state_.record.name;
    if (!AskName(name)) return;
    const ustr oldName = std::exchange(state_.record.name, name);
    const astr oldKey = std::exchange(state_.record.key, astr());
    Ctrls2Data();
    state_.host.AskFor(state_.record, SaveConfiguration, HostCallback::WParam(&state_.record), 0);
    if (state_.record.key.empty()) {
        state_.record.name = oldName;
        state_.record.key = oldKey;
        return;
    }
    state_.presets.push_back({state_.record.key, state_.record.name});
    AddConfiguration(state_.presets.size() - 1, true);
    EnableDisableCtrls(EnableAll);
}

void Ctrl::Impl::RemoveConfiguration() {
    const int selected = SelectedConfiguration();
    if (selected < 0) return;
    const astr key = state_.presets[static_cast<std::size_t>(selected)].key;
    if (state_.host.AskRefusing(DeleteConfiguration, HostCallback::WParam(key.c_str())) != 0) return;
    std::erase_if(state_.presets, [&key](const PresetEntry& preset) { return preset.key == key; });
    state_.record.key.clear();
    state_.record.name.clear();
    RefillConfigurations();
    EnableDisableCtrls(EnableAll);
}

void Ctrl::Impl::Rename() {
    const astr key = state_.record.key;
    ustr name = state_.record.name;
    if (key.empty() || !AskName(name)) return;
    if (!state_.host.TryAsk(RenameConfiguration, HostCallback::WParam(key.c_str()), HostCallback::LParam(name.c_str())))
        return;
    state_.record.name = name;
    for (PresetEntry& preset : state_.presets) {
        if (preset.key == key) preset.name = name;
    }
    RefillConfigurations();
}

// A configuration without a name could not be found again: to give none is to cancel.
bool Ctrl::Impl::AskName(ustr& name) const {
    const ustr title = Lng::text(kLibraryTexts, 20289, L"Configuration name");
    return AskValueDlg::Run(Window(), state_.app, title, NamePrompt(), name, kNameLimit) >= 0 && !name.empty();
}

}  // namespace ObjectSelection::Dlg
