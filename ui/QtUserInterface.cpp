#include "ui/QtUserInterface.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPixmap>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

#include "ui/DialogWindow.h"

namespace rivulet {

namespace {

constexpr const char* kMessageTitle = "tNavigator";

QMessageBox::Icon BoxIcon(MessageIcon icon) {
    switch (icon) {
        case MessageIcon::Information:
            return QMessageBox::Information;
        case MessageIcon::Warning:
            return QMessageBox::Warning;
        case MessageIcon::Error:
            return QMessageBox::Critical;
        case MessageIcon::Question:
            return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

// What a dialog opens over: the dialog running now, if any.
QWidget* Owner() {
    return QApplication::activeModalWidget();
}

// Shows the window without running it and saves what it shows; false when the image could not be written.
bool SaveScreenshot(QDialog& window, const QString& file) {
    window.show();
    // The layout settles over several passes (sizes, then the heights of wrapped labels).
    for (int pass = 0; pass < 3; ++pass) QApplication::processEvents();
    const bool saved = window.grab().save(file, "PNG");
    window.hide();
    return saved;
}

}  // namespace

bool QtUserInterface::Unseen() const {
    // On a platform that draws nowhere a window could never be answered: it would wait for ever.
    const QString platform = QGuiApplication::platformName();
    return !onDialogShown && (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal"));
}

QString FileDialogFilter(const std::string& filter) {
    const QStringList parts = QString::fromStdString(filter).split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString description = parts[i].trimmed();
        const QString patterns =
            parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts).join(QLatin1Char(' '));
        if (patterns.isEmpty()) continue;
        // The description's own list of patterns gives way to the one that applies.
        if (const qsizetype open = description.lastIndexOf(QLatin1Char('('));
            open >= 0 && description.endsWith(QLatin1Char(')')))
            description = description.left(open).trimmed();
        filters.append(description.isEmpty() ? patterns : description + " (" + patterns + ")");
    }
    return filters.join(QStringLiteral(";;"));
}

QtUserInterface::QtUserInterface() {
    if (QCoreApplication::instance() == nullptr) {
        // The application lives as long as the process: widgets may still be around when this interface goes.
        static int argc = 1;
        static char name[] = "rivulet";
        static char* argv[] = {name, nullptr};
        new QApplication(argc, argv);
    }
}

void QtUserInterface::ShowMessage(const std::string& text, MessageIcon icon) {
    if (onMessage) {
        onMessage(text, icon);
        return;
    }
    if (Unseen()) {
        std::fprintf(stderr, "rivulet: %s\n", text.c_str());
        return;
    }
    QMessageBox box(BoxIcon(icon), kMessageTitle, QString::fromStdString(text), QMessageBox::Ok, Owner());
    box.exec();
}

DialogAnswer QtUserInterface::RunModal(std::uint64_t, ModalDialog& dialog) {
    dialog.OnOpen();
    DialogWindow window(dialog, Owner());
    if (const char* screenshot = std::getenv("RIVULET_UI_SCREENSHOT"); screenshot != nullptr && *screenshot) {
        if (!SaveScreenshot(window, QString::fromLocal8Bit(screenshot)))
            std::fprintf(stderr, "rivulet: the dialog \"%s\" could not be saved to %s\n",
                         dialog.Title().c_str(), screenshot);
        return DialogAnswer::Cancel;
    }
    if (Unseen()) {
        std::fprintf(stderr, "rivulet: \"%s\" cannot be shown on this display; answered Cancel\n",
                     dialog.Title().c_str());
        return DialogAnswer::Cancel;
    }
    if (onDialogShown) QTimer::singleShot(0, &window, [this, &window] { onDialogShown(window); });
    const int result = window.exec();
    window.RethrowHandlerFailure();
    return result == QDialog::Accepted ? DialogAnswer::Ok : DialogAnswer::Cancel;
}

std::optional<std::string> QtUserInterface::ChooseFile(const std::string& filter,
                                                       const std::string& defaultExtension,
                                                       const std::string& startName) {
    // getOpenFileName's chooser, made by hand so that a name typed without an extension takes the default.
    if (Unseen()) return std::nullopt;
    QFileDialog chooser(Owner(), QString(), QDir::currentPath(), FileDialogFilter(filter));
    chooser.setAcceptMode(QFileDialog::AcceptOpen);
    chooser.setFileMode(QFileDialog::ExistingFile);
    QString suffix = QString::fromStdString(defaultExtension);
    while (suffix.startsWith(QLatin1Char('.'))) suffix.remove(0, 1);
    chooser.setDefaultSuffix(suffix);
    if (!startName.empty()) chooser.selectFile(QString::fromStdString(startName));
    if (chooser.exec() != QDialog::Accepted || chooser.selectedFiles().isEmpty()) return std::nullopt;
    return chooser.selectedFiles().constFirst().toStdString();
}

std::optional<std::string> QtUserInterface::ChooseDirectory(const std::string& title) {
    if (Unseen()) return std::nullopt;
    const QString folder = QFileDialog::getExistingDirectory(Owner(), QString::fromStdString(title));
    if (folder.isEmpty()) return std::nullopt;
    return folder.toStdString();
}

void QtUserInterface::ShowHelp(int topic) {
    ShowMessage("Help topic " + std::to_string(topic) + " is not installed with this driver.",
                MessageIcon::Information);
}

}  // namespace rivulet

// The front end's only export, which the plug-in looks up by name.
extern "C" __attribute__((visibility("default"))) rivulet::UserInterface* RivuletCreateUserInterface() {
    try {
        return new rivulet::QtUserInterface();
    } catch (...) {
        return nullptr;
    }
}
