#pragma once

// The controls of the window as Qt widgets. Each reports to the window's events and never changes by itself
// what the program decides.

#include "platform/ui.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>

namespace kst::platform {

/// A check box whose mark changes only by `showChecked`; a click, the space bar and a screen reader's toggle
/// all report `clicked`.
class CheckBox final : public QCheckBox {
public:
    CheckBox(QWidget* parent, int controlId, WindowEvents& events);
    void showChecked(bool checked);

protected:
    void nextCheckState() override {}
    bool hitButton(const QPoint& position) const override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool shown_ = false;
};

/// A text box that reports Enter and keeps it from the window.
class TextBox final : public QLineEdit {
public:
    TextBox(QWidget* parent, int controlId, int textLimit, WindowEvents& events);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    int controlId_;
    WindowEvents& events_;
};

/// A push button that Enter presses as well as the space bar.
class PushButton final : public QPushButton {
public:
    PushButton(QWidget* parent, int controlId, const QString& caption, WindowEvents& events);

protected:
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace kst::platform
