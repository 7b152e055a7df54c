#include "platform/UserInterface.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <stdexcept>

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
bool g_frontEndTried = false;

bool DisplayPresent() {
    if (std::getenv("RIVULET_HEADLESS") != nullptr) return false;
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != '\0') return true;
    }
    return false;
}

// The front end beside the library that holds this code, or where RIVULET_UI_LIBRARY says; null when there
// is none to load. The library stays loaded for the life of the process.
std::shared_ptr<UserInterface> LoadFrontEnd() {
    std::string path;
    if (const char* named = std::getenv("RIVULET_UI_LIBRARY"); named != nullptr && *named != '\0') {
        path = named;
    } else {
        Dl_info self{};
        if (::dladdr(reinterpret_cast<const void*>(&LoadFrontEnd), &self) == 0 || self.dli_fname == nullptr)
            return nullptr;
        path = (std::filesystem::path(self.dli_fname).parent_path() / kUserInterfaceLibrary).string();
    }
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "rivulet: no dialogs, the front end could not be loaded: %s\n", ::dlerror());
        return nullptr;
    }
    auto create = reinterpret_cast<CreateUserInterfaceFunction>(::dlsym(library, kCreateUserInterfaceSymbol));
    UserInterface* ui = create != nullptr ? create() : nullptr;
    if (ui == nullptr) {
        std::fprintf(stderr, "rivulet: no dialogs, the front end %s gave no interface\n", path.c_str());
        return nullptr;
    }
    return std::shared_ptr<UserInterface>(ui);
}

}  // namespace

Control* ModalDialog::Find(int id) {
    for (Control& control : controls_) {
        if (control.id == id) return &control;
    }
    return nullptr;
}

const Control* ModalDialog::Find(int id) const {
    return const_cast<ModalDialog*>(this)->Find(id);
}

Control& ModalDialog::At(int id) {
    Control* control = Find(id);
    if (control == nullptr) throw std::logic_error("no control " + std::to_string(id) + " in " + Title());
    return *control;
}

const Control& ModalDialog::At(int id) const {
    return const_cast<ModalDialog*>(this)->At(id);
}

Control& ModalDialog::Add(int id, ControlKind kind, std::string text, ControlPlace place) {
    Control& control = controls_.emplace_back();
    control.id = id;
    control.kind = kind;
    control.text = std::move(text);
    control.place = place;
    return control;
}

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
    if (!g_ui && !g_frontEndTried && DisplayPresent()) {
        g_frontEndTried = true;
        g_ui = LoadFrontEnd();
    }
    if (g_ui) return *g_ui;
    return headless;
}

std::shared_ptr<UserInterface> InstallUserInterface(std::shared_ptr<UserInterface> ui) {
    std::lock_guard<std::mutex> lock(g_uiMutex);
    auto previous = std::move(g_ui);
    g_ui = std::move(ui);
    g_frontEndTried = g_ui != nullptr;
    return previous;
}

}  // namespace rivulet
