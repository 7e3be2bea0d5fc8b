#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>

#include "DialogTables.h"
#include "EditCopy.h"
#include "FrameTest_ids.h"
#include "host/driver/UiDriver.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*);

// The pattern and the tables that every dialog of the library is made of, on a dialog of the test's own.

namespace {

struct Note {
    struct Fault {
        bool throwsOnCopy = false;

        Fault() = default;
        Fault(const Fault& other) : throwsOnCopy(other.throwsOnCopy) {
            if (throwsOnCopy) throw std::runtime_error("copy");
        }
        Fault& operator=(const Fault&) = default;
    };

    ustr_pre<8> name = L"Name";
    ustr text = L"Text";
    wchar_t code[5] = {L'A', L'B', L'\0', L'x'};
    bool done = true;
    Fault fault;
};

constexpr TextRow kTexts[] = {
    {kCaption,        kLibraryTexts, 1, L"Note"  },
    {IDC_FRAME_CLEAR, kLibraryTexts, 2, L"Clear" },
    {IDOK,            kSharedTexts,  3, L"OK"    },
    {IDCANCEL,        kSharedTexts,  4, L"Cancel"},
};

constexpr FieldRow<Note> kFields[] = {
    {IDC_FRAME_NOTE, kField<&Note::text>, kAny                                  },
    {IDC_FRAME_NAME, kField<&Note::name>, Rule{.maxChars = 10, .required = true}},
    {IDC_FRAME_CODE, kField<&Note::code>, kAny                                  },
    {IDC_FRAME_DONE, kField<&Note::done>, kAny                                  },
};

constexpr AnchorRow kTwice[] = {
    {1, 0, 0, 0, 0},
    {2, 0, 0, 0, 0},
    {1, 0, 0, 0, 0}
};
static_assert(Distinct(kTexts) && !Distinct(kTwice));

class NoteDlg : public OCDialog {
public:
    static constexpr wchar_t kTemplate[] = L"FRAMEDLG";

    /// `more` runs while the dialog opens.
    NoteDlg(HINSTANCE instance, HWND parent, Note& note, void (*more)(NoteDlg&) = nullptr)
        : OCDialog(instance, parent), note_(note), more_(more) {}

    bool OnInitDialog() override {
        OCDialog::OnInitDialog();
        Show(*this, kFields, note_);
        EnableCommands(*this, kCommands);
        if (more_) more_(*this);
        return true;
    }
    void SetLanguage() override {
        OCDialog::SetLanguage();
        ApplyTexts(*this, kTexts, Lng::Electrical);
    }
    bool OnCommand(unsigned __int64 wParam, __int64 lParam) override {
        return RunCommand(*this, kCommands, wParam) || OCDialog::OnCommand(wParam, lParam);
    }
    void OnOk() override {
        if (TakeData()) OCDialog::OnOk();
    }
    int GetDataFromCtrls() override { return Take(*this, kFields, note_); }

    void Clear() {
        note_.text.clear();
        Show(*this, kFields, note_);
        EnableCommands(*this, kCommands);
    }
    bool CanClear() const { return !note_.text.empty(); }

private:
    static constexpr CommandRow<NoteDlg> kCommands[] = {
        {IDC_FRAME_CLEAR, &NoteDlg::Clear, &NoteDlg::CanClear}
    };

    Note& note_;
    void (*more_)(NoteDlg&);
};

class FrameTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        Lng::SetLanguage(L"en");
        // This program stands in for the module.
        EXPECT_TRUE(DllMain(GetModuleHandleW(nullptr), DLL_PROCESS_ATTACH, nullptr));
    }

    bool Edit(const std::function<void(HWND)>& act) {
        uidriver::Script script;
        script.WithNewDialog(act);
        script.Start();
        const bool result = EditCopy<NoteDlg>(note_, nullptr);
        EXPECT_TRUE(script.Finished()) << script.Failure();
        return result;
    }

    Note note_;
};

TEST_F(FrameTest, TheModuleKnowsItselfAndTheProduct) {
    EXPECT_EQ(ModuleInstance(), GetModuleHandleW(nullptr));
    EXPECT_STREQ(ProductName(), L"OrvaCAD");
    const int releases = gwreleasecount();
    for (const DWORD reason : {DWORD{DLL_THREAD_ATTACH}, DWORD{DLL_THREAD_DETACH}})
        EXPECT_TRUE(DllMain(nullptr, reason, nullptr));
    EXPECT_EQ(ModuleInstance(), GetModuleHandleW(nullptr));
    EXPECT_EQ(gwreleasecount(), releases);
}

TEST_F(FrameTest, OkWritesTheCopyBackAndCancelDoesNot) {
    EXPECT_FALSE(Edit([](HWND dlg) {
        uidriver::Click(dlg, IDC_FRAME_CLEAR);
        uidriver::SetText(dlg, IDC_FRAME_NAME, L"Other");
        uidriver::Click(dlg, IDCANCEL);
    }));
    EXPECT_EQ(note_.name, L"Name");
    EXPECT_EQ(note_.text, L"Text");

    EXPECT_TRUE(Edit([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Note - OrvaCAD Electrical");
        SendMessageW(dlg, WM_COMMAND, IDC_FRAME_CLEAR, 0);
        uidriver::SetText(dlg, IDC_FRAME_NAME, L"Other");
        uidriver::Click(dlg, IDOK);
    }));
    EXPECT_EQ(note_.name, L"Other");
    EXPECT_EQ(note_.text, L"");
}

TEST_F(FrameTest, FieldsGoToTheirControlsAndBackWithinTheirLimits) {
    const auto bytes = [this] { return std::wstring(note_.code, std::size(note_.code)); };
    EXPECT_TRUE(Edit([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(uidriver::Control(dlg, IDC_FRAME_CODE)), L"AB");
        EXPECT_EQ(SendMessageW(uidriver::Control(dlg, IDC_FRAME_CODE), EM_GETLIMITTEXT, 0, 0), 4);
        EXPECT_EQ(IsDlgButtonChecked(dlg, IDC_FRAME_DONE), static_cast<UINT>(BST_CHECKED));
        uidriver::Click(dlg, IDOK);
    }));
    EXPECT_EQ(bytes(), std::wstring(L"AB\0x\0", 5)) << "a text that stays is as it was, byte for byte";
    EXPECT_TRUE(note_.done);

    EXPECT_TRUE(Edit([](HWND dlg) {
        SetWindowTextW(uidriver::Control(dlg, IDC_FRAME_CODE), L"abc\xD83D\xDE00");
        SetWindowTextW(uidriver::Control(dlg, IDC_FRAME_NAME), L"123456789\xD83D\xDE00");
        uidriver::Click(dlg, IDC_FRAME_DONE);
        uidriver::Click(dlg, IDOK);
    }));
    EXPECT_EQ(bytes(), std::wstring(L"abc\0\0", 5)) << "half a surrogate pair must not stay";
    EXPECT_EQ(note_.name, L"123456789");
    EXPECT_FALSE(note_.done);
}

TEST_F(FrameTest, ACommandThatCannotRunDoesNot) {
    note_.text = L"";
    EXPECT_TRUE(Edit([](HWND dlg) {
        EXPECT_FALSE(IsWindowEnabled(uidriver::Control(dlg, IDC_FRAME_CLEAR)));
        SetWindowTextW(uidriver::Control(dlg, IDC_FRAME_NOTE), L"typed");
        SendMessageW(dlg, WM_COMMAND, IDC_FRAME_CLEAR, 0);
        uidriver::Click(dlg, IDOK);
    }));
    EXPECT_EQ(note_.text, L"typed");
}

TEST_F(FrameTest, ATemplateThatLacksANamedControlDoesNotOpen) {
    static constexpr TextRow kText[] = {
        {999, kLibraryTexts, 1, L"Text"}
    };
    static constexpr AnchorRow kAnchor[] = {
        {999, 0, 0, 1, 1}
    };
    static constexpr FieldRow<Note> kNoteField[] = {
        {999, kField<&Note::name>, kAny}
    };
    static constexpr CommandRow<NoteDlg> kCommand[] = {
        {999, &NoteDlg::Clear, &NoteDlg::CanClear}
    };
    constexpr void (*kLacking[])(NoteDlg&) = {
        [](NoteDlg& dlg) { ApplyTexts(dlg, kText, Lng::Hpv); },
        [](NoteDlg& dlg) { ApplyAnchors(dlg, kAnchor); },
        [](NoteDlg& dlg) { Show(dlg, kNoteField, Note()); },
        [](NoteDlg& dlg) { EnableCommands(dlg, kCommand); },
    };
    for (const auto& lacking : kLacking) {
        EXPECT_FALSE(EditCopy<NoteDlg>(note_, nullptr, lacking));
        EXPECT_EQ(note_.text, L"Text");
    }
}

TEST_F(FrameTest, NothingIsThrownToTheCaller) {
    note_.fault.throwsOnCopy = true;
    EXPECT_FALSE(EditCopy<NoteDlg>(note_, nullptr));
    EXPECT_EQ(note_.text, L"Text");
}

}  // namespace
