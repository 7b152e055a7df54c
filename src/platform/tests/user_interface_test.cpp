// The process-wide user interface: headless by default, replaceable, and restored.
#include <gtest/gtest.h>

#include <memory>

#include "platform/UserInterface.h"

namespace rivulet {
namespace {

class AlwaysOk : public UserInterface {
  public:
    int shown = 0;
    void ShowMessage(const std::string&, MessageIcon) override { ++shown; }
    DialogAnswer RunModal(std::uint64_t, ModalDialog& dialog) override {
        return dialog.OnOk() ? DialogAnswer::Ok : DialogAnswer::Cancel;
    }
};

class Dialog : public ModalDialog {
  public:
    bool okCalled = false;
    std::string Title() const override { return "Test"; }
    bool OnOk() override { return okCalled = true; }
};

TEST(UserInterface, HeadlessDefaultAnswersCancelWithoutTouchingTheDialog) {
    Dialog dialog;
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Cancel);
    EXPECT_FALSE(dialog.okCalled);
}

TEST(UserInterface, AnInstalledInterfaceServesUntilTheHeadlessOneIsPutBack) {
    auto ok = std::make_shared<AlwaysOk>();
    InstallUserInterface(ok);
    Dialog dialog;
    EXPECT_EQ(CurrentUserInterface().RunModal(0, dialog), DialogAnswer::Ok);
    CurrentUserInterface().ShowMessage("hello", MessageIcon::Warning);
    EXPECT_EQ(ok->shown, 1);
    EXPECT_EQ(InstallUserInterface(nullptr), ok);
    Dialog again;
    EXPECT_EQ(CurrentUserInterface().RunModal(0, again), DialogAnswer::Cancel);
}

}  // namespace
}  // namespace rivulet
