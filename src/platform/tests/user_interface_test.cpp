// The process-wide user interface: headless by default, replaceable, and restored.
#include <gtest/gtest.h>

#include <memory>

#include "platform/UserInterface.h"

namespace rivulet {
namespace {

struct AlwaysOk : UserInterface {
    int shown = 0;
    void ShowMessage(const std::string&, MessageIcon) override { ++shown; }
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        return dialog.OnOk() ? DialogAnswer::Ok : DialogAnswer::Cancel;
    }
};

struct Dialog : ModalDialog {
    bool okCalled = false;
    std::string Title() const override { return "Test"; }
    bool OnOk() override { return okCalled = true; }
};

TEST(UserInterface, HeadlessUntilAnotherIsInstalledAndAfterItIsRemoved) {
    Dialog dialog;
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Cancel);
    EXPECT_FALSE(dialog.okCalled);

    auto ok = std::make_shared<AlwaysOk>();
    EXPECT_EQ(InstallUserInterface(ok), nullptr);
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Ok);
    CurrentUserInterface().ShowMessage("hello", MessageIcon::Warning);
    EXPECT_EQ(ok->shown, 1);
    EXPECT_EQ(InstallUserInterface(nullptr), ok);
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Cancel);
}

}  // namespace
}  // namespace rivulet
