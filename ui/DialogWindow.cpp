#include "ui/DialogWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStringList>
#include <QTimer>
#include <algorithm>

namespace rivulet {

namespace {

// Labels with a line longer than this wrap at the width the layout gives them.
constexpr qsizetype kLongestUnwrappedLine = 60;

// Several lines of text: a few lines high unless the layout gives it more room.
class LinesEdit final : public QPlainTextEdit {
  public:
    using QPlainTextEdit::QPlainTextEdit;
    QSize sizeHint() const override {
        constexpr int kLines = 5;
        const int margins = 2 * (frameWidth() + qRound(document()->documentMargin()));
        return {QPlainTextEdit::sizeHint().width(), kLines * fontMetrics().lineSpacing() + margins};
    }
};

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

std::string Text(const QString& text) {
    return text.toStdString();
}

bool NeedsWrap(const QString& text) {
    const auto lines = text.split(QLatin1Char('\n'));
    return std::any_of(lines.begin(), lines.end(),
                       [](const QString& line) { return line.size() > kLongestUnwrappedLine; });
}

QStringList Items(const std::vector<std::string>& items) {
    QStringList list;
    for (const std::string& item : items) list.append(Text(item));
    return list;
}

QStringList Items(const QComboBox& combo) {
    QStringList list;
    for (int i = 0; i < combo.count(); ++i) list.append(combo.itemText(i));
    return list;
}

QWidget* MakeWidget(const Control& control, QWidget* parent) {
    switch (control.kind) {
        case ControlKind::Group:
            return new QGroupBox(parent);
        case ControlKind::Label: {
            auto* label = new QLabel(parent);
            label->setTextFormat(Qt::PlainText);
            return label;
        }
        case ControlKind::Edit:
            return new QLineEdit(parent);
        case ControlKind::PasswordEdit: {
            auto* edit = new QLineEdit(parent);
            edit->setEchoMode(QLineEdit::Password);
            return edit;
        }
        case ControlKind::MultiLineEdit:
            return new LinesEdit(parent);
        case ControlKind::Combo:
            return new QComboBox(parent);
        case ControlKind::EditableCombo: {
            auto* combo = new QComboBox(parent);
            combo->setEditable(true);
            // The list is the logic's: Enter in the field must not add to it.
            combo->setInsertPolicy(QComboBox::NoInsert);
            return combo;
        }
        case ControlKind::Check:
            return new QCheckBox(parent);
        case ControlKind::Radio:
            return new QRadioButton(parent);
        case ControlKind::Button: {
            auto* button = new QPushButton(parent);
            // Enter presses nothing: OK goes through the logic like any other button, when it is clicked.
            button->setAutoDefault(false);
            button->setDefault(false);
            return button;
        }
    }
    return new QWidget(parent);
}

}  // namespace

DialogWindow::DialogWindow(ModalDialog& dialog, QWidget* parent) : QDialog(parent), dialog_(dialog) {
    setWindowTitle(Text(dialog_.Title()));
    Build();
}

void DialogWindow::RethrowHandlerFailure() const {
    if (failure_) std::rethrow_exception(failure_);
}

void DialogWindow::reject() {
    Dispatch([this] { return dialog_.OnClicked(kIdCancel); });
}

void DialogWindow::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    FitLater();
}

void DialogWindow::FitLater() {
    // The size a window takes when shown counts wrapped labels at another width than the one they get, and
    // controls the logic shows later can need more room; too small a window squeezes the edits.
    QTimer::singleShot(0, this, [this] {
        const int needed =
            layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width()) : sizeHint().height();
        if (needed > height()) resize(width(), needed);
    });
}

void DialogWindow::Build() {
    auto* own = new QGridLayout(this);
    grids_[0] = own;
    const auto& controls = dialog_.Controls();
    widgets_.reserve(controls.size());
    for (const Control& control : controls) {
        QWidget* widget = MakeWidget(control, this);
        widget->setObjectName(QStringLiteral("control-%1").arg(control.id));
        if (control.kind == ControlKind::Group) grids_[control.id] = new QGridLayout(widget);
        widgets_.push_back(widget);
    }
    // Groups are placed like any control, so they can come in any order and hold other groups.
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const ControlPlace& place = controls[i].place;
        const auto grid = grids_.find(place.group);
        QGridLayout* into = grid != grids_.end() && place.group != controls[i].id ? grid->second : own;
        into->addWidget(widgets_[i], place.row, place.column, 1, std::max(1, place.columnSpan));
    }
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const int id = controls[i].id;
        QWidget* widget = widgets_[i];
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            connect(button, &QAbstractButton::clicked, this,
                    [this, id] { Dispatch([this, id] { return dialog_.OnClicked(id); }); });
        } else if (auto* combo = qobject_cast<QComboBox*>(widget)) {
            // Like clicked, activated comes only from the user, so showing the controls calls no handler.
            connect(combo, &QComboBox::activated, this,
                    [this, id] { Dispatch([this, id] { return dialog_.OnSelectionChanged(id); }); });
        }
    }
    ShowControls();
}

void DialogWindow::ReadWidgets() {
    auto& controls = dialog_.Controls();
    for (std::size_t i = 0; i < controls.size() && i < widgets_.size(); ++i) {
        Control& control = controls[i];
        QWidget* widget = widgets_[i];
        switch (control.kind) {
            case ControlKind::Edit:
            case ControlKind::PasswordEdit:
                control.text = Text(static_cast<QLineEdit*>(widget)->text());
                break;
            case ControlKind::MultiLineEdit:
                control.text = Text(static_cast<QPlainTextEdit*>(widget)->toPlainText());
                break;
            case ControlKind::Combo:
                control.selection = static_cast<QComboBox*>(widget)->currentIndex();
                break;
            case ControlKind::EditableCombo: {
                const auto* combo = static_cast<QComboBox*>(widget);
                const QString text = combo->currentText();
                control.text = Text(text);
                // Typed text selects the item it spells, or none.
                const int index = combo->currentIndex();
                control.selection = index >= 0 && combo->itemText(index) == text
                                        ? index
                                        : combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
                break;
            }
            case ControlKind::Check:
            case ControlKind::Radio:
                control.checked = static_cast<QAbstractButton*>(widget)->isChecked();
                break;
            case ControlKind::Group:
            case ControlKind::Label:
            case ControlKind::Button:
                break;
        }
    }
}

void DialogWindow::ShowControls() {
    const auto& controls = dialog_.Controls();
    for (std::size_t i = 0; i < controls.size() && i < widgets_.size(); ++i) Show(controls[i], widgets_[i]);
}

void DialogWindow::Show(const Control& control, QWidget* widget) {
    const QString text = Text(control.text);
    switch (control.kind) {
        case ControlKind::Group:
            static_cast<QGroupBox*>(widget)->setTitle(text);
            break;
        case ControlKind::Label: {
            auto* label = static_cast<QLabel*>(widget);
            label->setText(text);
            label->setWordWrap(NeedsWrap(text));
            break;
        }
        case ControlKind::Edit:
        case ControlKind::PasswordEdit: {
            // Set only when it differs, so that the caret and the undo history stay the user's.
            auto* edit = static_cast<QLineEdit*>(widget);
            if (edit->text() != text) edit->setText(text);
            break;
        }
        case ControlKind::MultiLineEdit: {
            auto* edit = static_cast<QPlainTextEdit*>(widget);
            if (edit->toPlainText() != text) edit->setPlainText(text);
            break;
        }
        case ControlKind::Combo:
        case ControlKind::EditableCombo: {
            auto* combo = static_cast<QComboBox*>(widget);
            const QStringList items = Items(control.items);
            if (Items(*combo) != items) {
                combo->clear();
                combo->addItems(items);
            }
            combo->setCurrentIndex(
                control.selection >= 0 && control.selection < combo->count() ? control.selection : -1);
            if (control.kind == ControlKind::EditableCombo && combo->currentText() != text)
                combo->setEditText(text);
            break;
        }
        case ControlKind::Check:
        case ControlKind::Button: {
            auto* button = static_cast<QAbstractButton*>(widget);
            button->setText(text);
            if (control.kind == ControlKind::Check) button->setChecked(control.checked);
            break;
        }
        case ControlKind::Radio: {
            // An exclusive radio cannot be unchecked on its own; the logic decides the whole set.
            auto* radio = static_cast<QRadioButton*>(widget);
            radio->setText(text);
            radio->setAutoExclusive(false);
            radio->setChecked(control.checked);
            radio->setAutoExclusive(true);
            break;
        }
    }
    widget->setEnabled(control.enabled);
    widget->setVisible(control.shown);
    widget->setToolTip(Text(control.toolTip));
    widget->setToolTipDuration(control.toolTipMilliseconds > 0 ? control.toolTipMilliseconds : -1);
}

void DialogWindow::Dispatch(const std::function<DialogAction()>& handler) {
    ReadWidgets();
    DialogAction action = DialogAction::None;
    try {
        action = handler();
    } catch (...) {
        // Nothing may unwind through the event loop; RunModal throws it again once the window is closed.
        failure_ = std::current_exception();
        QDialog::done(QDialog::Rejected);
        return;
    }
    ShowControls();
    FitLater();
    if (action == DialogAction::CloseOk) {
        accept();
    } else if (action == DialogAction::CloseCancel) {
        QDialog::reject();
    }
}

}  // namespace rivulet
