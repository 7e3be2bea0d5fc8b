#include <gtest/gtest.h>
#include <occommonui/ObjectSelectionCmd.h>
#include <windows.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "objectselection_ids.h"
#include "support/SelectionTest.h"

namespace {

using namespace ObjectSelection::Dlg;
using ObjectSelection::Data;
using ObjectSelection::RecordData;
using Messages = std::vector<CbMsgId>;

constexpr int kManageDrawings = 402;  // the command of the items' menu
const Messages kLocking = {LockProject, UnlockProject};

const Data kSystems = SystemInCurrentDrawing(32);

TEST(PrjLock, AsksTheHostOnceAndReleasesOnce) {
    SelectionHost host;
    SelectionHost other;
    const HWND owner = GetDesktopWindow();
    {
        PrjLock lock;
        EXPECT_FALSE(lock.IsLocked());
        EXPECT_TRUE(lock.Lock(owner, host.Callback()));
        EXPECT_EQ(host.asked.back(), (SelectionHost::Asked{LockProject, reinterpret_cast<std::uintptr_t>(owner), 0}));
        EXPECT_TRUE(lock.Lock(owner, other.Callback()));
        EXPECT_TRUE(other.asked.empty()) << "a lock that is held is not taken again";
        lock.Unlock();
        EXPECT_FALSE(lock.IsLocked());
        lock.Unlock();
        EXPECT_TRUE(lock.Lock(owner, other.Callback())) << "and can be taken again, from another host";
    }
    EXPECT_EQ(host.Order(kLocking), kLocking);
    EXPECT_EQ(other.Order(kLocking), kLocking) << "released when it goes";
    EXPECT_EQ(other.asked.back(), (SelectionHost::Asked{UnlockProject, 0, 0}));
}

TEST(PrjLock, ThatWasRefusedOrNeverTakenReleasesNothing) {
    SelectionHost host;
    {
        const PrjLock never;
        host.Answers(LockProject, -1);
        const PrjLock refused(nullptr, host.Callback());
        EXPECT_FALSE(refused.IsLocked());
        host.Throws(LockProject);
        const PrjLock failed(nullptr, host.Callback());
        EXPECT_FALSE(failed.IsLocked());
    }
    EXPECT_EQ(host.Order(kLocking), (Messages{LockProject, LockProject}));
    PrjLock lock;
    EXPECT_THROW(lock.Lock(nullptr, nullptr), std::bad_function_call);
    EXPECT_FALSE(lock.IsLocked());
}

TEST(PrjLock, CopiesAreHeldAndReleasedOnTheirOwn) {
    SelectionHost host;
    host.Throws(UnlockProject);  // which keeps no lock from being released
    {
        auto lock = std::make_unique<PrjLock>(nullptr, host.Callback());
        const PrjLock copy(*lock);
        PrjLock assigned;
        assigned = copy;
        EXPECT_TRUE(copy.IsLocked());
        EXPECT_TRUE(assigned.Lock(nullptr, nullptr)) << "the flag is copied";
        lock.reset();
        EXPECT_EQ(host.Count(UnlockProject), 1);
    }
    EXPECT_EQ(host.Count(LockProject), 1);
    EXPECT_EQ(host.Count(UnlockProject), 3);
}

class ObjectSelectionDlgTest : public SelectionTest {
protected:
    ObjectSelectionDlgTest() : SelectionTest(IDC_OBJSEL_CATEGORIES) {}

    int Edit(int flags) {
        return RunSteps([&] { return ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), data_, flags); });
    }
    int EditRecord() {
        return RunSteps([&] { return ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), record_, 0); });
    }
    bool Options() {
        return RunSteps(
            [&] { return ObjectSelectionCmd::OptionsDlg(parent_, Lng::Hpv, host_.Callback(), data_, result_); });
    }

    Data data_ = kSystems;
    RecordData record_;
    ObjectSelectionCmd::Result result_ = ObjectSelectionCmd::ShowInReport;
};

TEST_F(ObjectSelectionDlgTest, OkGivesTheCriteriaBackAsTheyWereShown) {
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Object selection - OrvaCAD HPV");
        EXPECT_EQ(Shown(dlg, IDC_OBJSEL_MANUAL), L"Manual selection");
        EXPECT_TRUE(IsChecked(dlg, IDC_OBJSEL_CURRENT));
        EXPECT_FALSE(GetDlgItem(dlg, IDC_OBJSEL_CONFIGURATION) || GetDlgItem(dlg, IDC_OBJSEL_NAME));
    });
    Press(IDOK);
    EXPECT_EQ(Edit(0), 0);
    EXPECT_EQ(data_, kSystems);
    EXPECT_TRUE(host_.Order(kLocking).empty());
}

TEST_F(ObjectSelectionDlgTest, OkTakesWhatTheUserChangedAndCancelNothing) {
    for (const int button : {IDCANCEL, IDOK}) {
        Pick(L"Systems");
        Turn(L"TK01");
        Press(button);
        EXPECT_EQ(Edit(0), button == IDOK ? 0 : -1);
        EXPECT_EQ(data_ == kSystems, button == IDCANCEL);
    }
    EXPECT_EQ(std::set(data_.systems.begin(), data_.systems.end()), (std::set<std::int32_t>{31, 32}));
}

TEST_F(ObjectSelectionDlgTest, SelectedDrawingsWithoutAnyAreRefusedAndNothingElseChanges) {
    Press(IDC_OBJSEL_SELECTED);
    Pick(L"Model drawings", true);
    ExpectRefused(IDC_OBJSEL_CURRENT);
    Step([](HWND dlg) {
        EXPECT_TRUE(IsChecked(dlg, IDC_OBJSEL_SELECTED)) << "the user's choice stays";
        EXPECT_FALSE(IsChecked(dlg, IDC_OBJSEL_CURRENT));
    });
    Pick(L"Model drawings", true);
    Press(IDOK);
    EXPECT_EQ(Edit(0), 0);
    EXPECT_FALSE(data_.currentDrawing);
    EXPECT_EQ(data_.modelDrawings.size(), 2u);
}

TEST_F(ObjectSelectionDlgTest, ConfigurationsAreOfferedUnderOneLock) {
    RecordData stored;
    stored.key = "A";
    stored.name = L"Supply air";
    stored.data = kSystems;
    host_.configurations = {stored};
    data_ = Data();
    Step([](HWND dlg) {
        const HWND combo = uidriver::Control(dlg, IDC_OBJSEL_CONFIGURATION);
        EXPECT_EQ(SendMessageW(combo, CB_GETCOUNT, 0, 0), 1);
        SetFocus(combo);
        uidriver::Key(VK_DOWN);
    });
    Step([](HWND dlg) { SendMessageW(dlg, WM_COMMAND, kManageDrawings, 0); });
    Step([this](HWND dlg) {
        EXPECT_EQ(host_.Count(ManageDrawings), 1);
        EXPECT_EQ(host_.Order(kLocking), Messages{LockProject}) << "the drawings are covered by the dialog's lock";
        uidriver::Click(dlg, IDOK);
    });
    EXPECT_EQ(Edit(kConfigurations | kLockForDrawings), 0);
    EXPECT_EQ(data_, kSystems);
    EXPECT_EQ(host_.Order(kLocking), kLocking);
    EXPECT_EQ(host_.asked.front().message, LockProject) << "before anything else";
    EXPECT_EQ(host_.asked.front().wParam, reinterpret_cast<std::uintptr_t>(parent_));
    EXPECT_EQ(host_.asked.back().message, UnlockProject);
}

TEST_F(ObjectSelectionDlgTest, ARefusedLockShowsNothing) {
    host_.Answers(LockProject, 1);
    EXPECT_EQ(ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), data_, kConfigurations), -1);
    EXPECT_EQ(host_.asked.size(), 1u);
    EXPECT_EQ(data_, kSystems);
}

TEST_F(ObjectSelectionDlgTest, WithoutConfigurationsManagingDrawingsTakesTheLock) {
    Step([](HWND dlg) { SendMessageW(dlg, WM_COMMAND, kManageDrawings, 0); });
    Step([this](HWND dlg) {
        const Messages order = {LockProject, ManageDrawings, UnlockProject};
        EXPECT_EQ(host_.Order(order), order);
        uidriver::Click(dlg, IDCANCEL);
    });
    EXPECT_EQ(Edit(kLockForDrawings), -1);
}

TEST_F(ObjectSelectionDlgTest, ARecordIsNamed) {
    record_.key = "K7";
    record_.name = L"Old";
    record_.data = kSystems;
    const RecordData before = record_;
    Enter(IDC_OBJSEL_NAME, L"New");
    Press(IDC_OBJSEL_MANUAL);
    Press(IDCANCEL);
    EXPECT_EQ(EditRecord(), -1);
    EXPECT_EQ(record_, before);

    Step([](HWND dlg) {
        EXPECT_EQ(Shown(dlg, IDC_OBJSEL_NAME), L"Old");
        EXPECT_TRUE(HasFocus(dlg, IDC_OBJSEL_NAME));
    });
    Enter(IDC_OBJSEL_NAME, L"");
    ExpectRefused(IDC_OBJSEL_NAME);
    Enter(IDC_OBJSEL_NAME, L"New");
    Press(IDOK);
    EXPECT_EQ(EditRecord(), 0);
    EXPECT_EQ(record_.key, "K7");
    EXPECT_EQ(record_.name, L"New");
    EXPECT_EQ(record_.data, kSystems);
}

TEST_F(ObjectSelectionDlgTest, TheCommandHasAResultToo) {
    Step([](HWND dlg) {
        EXPECT_EQ(uidriver::Text(dlg), L"Object selection - OrvaCAD HPV");
        EXPECT_EQ(Shown(dlg, 101), L"Selection result");
        EXPECT_EQ(Shown(dlg, 130), L"Select objects in the drawing");
        EXPECT_EQ(Shown(dlg, 131), L"Show selected items in report");
        EXPECT_TRUE(IsChecked(dlg, 131));
    });
    for (const int button : {IDCANCEL, IDOK}) {
        Press(130);
        Press(IDC_OBJSEL_MANUAL);
        Press(button);
        EXPECT_EQ(Options(), button == IDOK);
        EXPECT_EQ(result_, button == IDOK ? ObjectSelectionCmd::SelectInDrawing : ObjectSelectionCmd::ShowInReport);
        EXPECT_EQ(data_ == kSystems, button == IDCANCEL);
    }
    EXPECT_FALSE(data_.bySelectionSet);
    EXPECT_EQ(data_.systems, kSystems.systems);
}

TEST_F(ObjectSelectionDlgTest, OpensWhereTheUserLeftIt) {
    ExpectOpensWhereItWasLeft(
        [this] { return ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), data_, 0); },
        [this] { return ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, host_.Callback(), record_, 0); });
}

TEST_F(ObjectSelectionDlgTest, AHostThatIsMissingOrGoneIsAFailure) {
    EXPECT_EQ(ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, nullptr, data_, 0), -1);
    EXPECT_EQ(ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, nullptr, data_, kConfigurations), -1);
    EXPECT_EQ(ObjectSelection::Dlg::Edit(Lng::Hpv, parent_, nullptr, record_, 0), -1);
    EXPECT_FALSE(ObjectSelectionCmd::OptionsDlg(parent_, Lng::Hpv, nullptr, data_, result_));

    EXPECT_EQ(ObjectSelection::Dlg::Edit(Lng::Hpv, GoneWindow(), host_.Callback(), data_, kConfigurations), -1);
    EXPECT_EQ(host_.Order(kLocking), kLocking);
    EXPECT_EQ(data_, kSystems);
    EXPECT_EQ(result_, ObjectSelectionCmd::ShowInReport);
}

}  // namespace
