// A dialog's logic shown as Qt widgets. Every control becomes a widget named "control-<id>" on its group's
// grid (a group is a QGroupBox with a grid of its own). The user's clicks and combo picks copy the widgets'
// state into the controls, run the logic's handler, show all the controls as the handler left them and close
// the window when the handler asks for it. Escape and the window's close button ask the logic as its Cancel
// button would.
#pragma once

#include <QDialog>
#include <exception>
#include <functional>
#include <map>
#include <vector>

#include "platform/UserInterface.h"

class QGridLayout;

namespace rivulet {

class DialogWindow final : public QDialog {
  public:
    // Builds the widgets from the controls as they stand; the logic's OnOpen has run before.
    DialogWindow(ModalDialog& dialog, QWidget* parent);

    // Throws again what a handler threw; the window closed with Cancel when it did.
    void RethrowHandlerFailure() const;

    // Escape and the window's close: the logic's Cancel decides.
    void reject() override;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void Build();
    // The widgets' state (texts, checks, selections) into the controls.
    void ReadWidgets();
    // Every control's state onto its widget.
    void ShowControls();
    void Show(const Control& control, QWidget* widget);
    // Grows the window to what its contents ask once the layout has settled.
    void FitLater();
    // Runs a handler as the user's action asks, then shows its outcome.
    void Dispatch(const std::function<DialogAction()>& handler);

    ModalDialog& dialog_;
    std::vector<QWidget*> widgets_;      // one for each control, in the order of the controls
    std::map<int, QGridLayout*> grids_;  // by group identifier; 0 is the dialog's own
    std::exception_ptr failure_;
};

}  // namespace rivulet
