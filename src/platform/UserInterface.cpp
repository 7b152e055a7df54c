#include "platform/UserInterface.h"

#include <cstdio>
#include <mutex>

namespace rivulet {

namespace {

const char* IconWord(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Information:
            return "information";
        case MessageIcon::Warning:
            return "warning";
        case MessageIcon::Error:
            return "error";
        case MessageIcon::Question:
            return "question";
    }
    return "message";
}

std::mutex g_uiMutex;
std::shared_ptr<UserInterface> g_ui;

}  // namespace

void HeadlessUserInterface::ShowMessage(const std::string& text, MessageIcon icon) {
    std::fprintf(stderr, "rivulet [%s]: %s\n", IconWord(icon), text.c_str());
}

DialogAnswer HeadlessUserInterface::RunModal(std::uint64_t, ModalDialog& dialog) {
    std::fprintf(stderr, "rivulet: no user interface to show \"%s\"; answered Cancel\n",
                 dialog.Title().c_str());
    return DialogAnswer::Cancel;
}

UserInterface& CurrentUserInterface() {
    static HeadlessUserInterface headless;
    std::lock_guard<std::mutex> lock(g_uiMutex);
    if (g_ui) return *g_ui;
    return headless;
}

std::shared_ptr<UserInterface> InstallUserInterface(std::shared_ptr<UserInterface> ui) {
    std::lock_guard<std::mutex> lock(g_uiMutex);
    auto previous = std::move(g_ui);
    g_ui = std::move(ui);
    return previous;
}

}  // namespace rivulet
