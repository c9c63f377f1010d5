#include "platform/linux/uicontrols.h"

#include "platform/linux/uipainter.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace kst::platform {

namespace {

constexpr QColor focusColour(0, 60, 150);
constexpr QColor frameColour(40, 40, 40);
constexpr QColor disabledColour(125, 140, 155);
constexpr QColor disabledFill(190, 212, 234);
constexpr QColor pressedFill(215, 228, 242);

bool isEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

} // namespace

CheckBox::CheckBox(QWidget* parent, int controlId, WindowEvents& events) : QCheckBox(parent) {
    setFocusPolicy(Qt::StrongFocus);
    connect(this, &QCheckBox::clicked, [controlId, &events] { events.clicked(controlId); });
    connect(this, &QCheckBox::toggled, [this, controlId, &events](bool checked) {
        // Assistive technology toggles without a click: that is a wish, not a change.
        if (checked != shown_) {
            setChecked(shown_);
            events.clicked(controlId);
        }
    });
}

void CheckBox::showChecked(bool checked) {
    shown_ = checked;
    setChecked(checked);
}

bool CheckBox::hitButton(const QPoint& position) const {
    return rect().contains(position);
}

void CheckBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const bool focused = hasFocus();
    const double border = focused ? 2.0 : 1.0;
    const QRectF box = QRectF(rect()).adjusted(border / 2, border / 2, -border / 2, -border / 2);
    painter.setPen(QPen(!isEnabled() ? disabledColour : focused ? focusColour : frameColour, border));
    painter.setBrush(!isEnabled() ? disabledFill : isDown() ? pressedFill : QColor(Qt::white));
    painter.drawRect(box);
    if (!isChecked()) {
        return;
    }
    QPainterPath mark;
    mark.moveTo(width() * 0.24, height() * 0.52);
    mark.lineTo(width() * 0.43, height() * 0.71);
    mark.lineTo(width() * 0.77, height() * 0.28);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(isEnabled() ? QColor(Qt::black) : disabledColour, 1.7));
    painter.drawPath(mark);
}

TextBox::TextBox(QWidget* parent, int controlId, int textLimit, WindowEvents& events)
    : QLineEdit(parent), controlId_(controlId), events_(events) {
    setFont(windowFont());
    if (textLimit > 0) {
        setMaxLength(textLimit);
    }
    setStyleSheet(QStringLiteral("QLineEdit { background: rgb(%1,%2,%3); color: black; padding: 0px 1px;"
                                 " border: 1px solid rgb(40,40,40); }"
                                 "QLineEdit:focus { border: 2px solid rgb(0,60,150); padding: 0px; }"
                                 "QLineEdit:disabled { color: rgb(90,105,120); background: rgb(176,204,232);"
                                 " border-color: rgb(125,140,155); }")
                      .arg(textBoxColour.red)
                      .arg(textBoxColour.green)
                      .arg(textBoxColour.blue));
}

void TextBox::keyPressEvent(QKeyEvent* event) {
    if (isEnter(*event)) {
        event->accept();
        events_.entered(controlId_);
        return;
    }
    QLineEdit::keyPressEvent(event);
}

PushButton::PushButton(QWidget* parent, int controlId, const QString& caption, WindowEvents& events)
    : QPushButton(caption, parent) {
    setFont(windowFont());
    setAutoDefault(false);
    setFocusPolicy(Qt::StrongFocus);
    setStyleSheet(QStringLiteral(
        "QPushButton { background: rgb(232,238,245); color: black; border: 1px solid rgb(40,40,40);"
        " border-radius: 3px; padding: 0px 4px; }"
        "QPushButton:hover { background: rgb(245,249,253); }"
        "QPushButton:pressed { background: rgb(200,212,226); }"
        "QPushButton:focus { border: 2px solid rgb(0,60,150); }"
        "QPushButton:disabled { color: rgb(110,125,140); background: rgb(176,204,232);"
        " border-color: rgb(125,140,155); }"));
    connect(this, &QPushButton::clicked, [controlId, &events] { events.clicked(controlId); });
}

void PushButton::keyPressEvent(QKeyEvent* event) {
    if (isEnter(*event)) {
        event->accept();
        click();
        return;
    }
    QPushButton::keyPressEvent(event);
}

} // namespace kst::platform
