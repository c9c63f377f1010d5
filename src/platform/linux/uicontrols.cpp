#include "platform/linux/uicontrols.h"

#include "platform/linux/uipainter.h"
#include "platform/uilook.h"

#include <algorithm>

#include <QKeyEvent>
#include <QPainter>
#include <QPolygonF>
#include <QValidator>

namespace kst::platform {

namespace {

/// The colour as a style sheet has it.
QString css(Colour colour) {
    return toQt(colour).name();
}

bool isEnter(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

/// Takes the line breaks out of what is pasted: a path that was copied with its line's end is still the path.
class OneLine final : public QValidator {
public:
    using QValidator::QValidator;
    State validate(QString& text, int& cursor) const override {
        const auto isBreak = [](QChar letter) {
            return letter == u'\n' || letter == u'\r' || letter == QChar::LineSeparator ||
                   letter == QChar::ParagraphSeparator;
        };
        const auto before = std::count_if(text.begin(), text.begin() + cursor, isBreak);
        text.removeIf(isBreak);
        cursor -= static_cast<int>(before);
        return Acceptable;
    }
};

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
    const double border = focused ? look::focusFrame : look::plainFrame;
    const QRectF box = QRectF(rect()).adjusted(border / 2, border / 2, -border / 2, -border / 2);
    const Colour frame = !isEnabled() ? look::disabledFrame : focused ? look::focus : look::frame;
    const Colour fill = !isEnabled() ? look::disabledCheckBoxFill
                        : isDown()   ? look::pressedFill
                                     : look::checkBoxFill;
    painter.setPen(QPen(toQt(frame), border));
    painter.setBrush(toQt(fill));
    painter.drawRect(box);
    if (!isChecked()) {
        return;
    }
    QPolygonF mark;
    for (const look::Share& corner : look::checkMark) {
        mark.append({width() * corner.x, height() * corner.y});
    }
    painter.setPen(QPen(toQt(isEnabled() ? look::mark : look::disabledFrame), 1.7));
    painter.drawPolyline(mark);
}

TextBox::TextBox(QWidget* parent, int controlId, int textLimit, WindowEvents& events)
    : QLineEdit(parent), controlId_(controlId), events_(events) {
    setFont(windowFont());
    if (textLimit > 0) {
        setMaxLength(textLimit);
    }
    setValidator(new OneLine(this));
    setStyleSheet(
        QStringLiteral("QLineEdit { background: %1; color: %2; padding: 0px 1px; border: 1px solid %3; }"
                       "QLineEdit:focus { border: 2px solid %4; padding: 0px; }"
                       "QLineEdit:disabled { background: %5; color: %6; border-color: %7; }")
            .arg(css(textBoxColour), css(look::boxText), css(look::frame), css(look::focus),
                 css(look::disabledBoxFill), css(look::disabledBoxText), css(look::disabledFrame)));
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
    setStyleSheet(
        QStringLiteral("QPushButton { background: rgb(232,238,245); color: black; border: 1px solid %1;"
                       " border-radius: 3px; padding: 0px 4px; }"
                       "QPushButton:hover { background: rgb(245,249,253); }"
                       "QPushButton:pressed { background: rgb(200,212,226); }"
                       "QPushButton:focus { border: 2px solid %2; }"
                       "QPushButton:disabled { background: %3; color: %4; border-color: %5; }")
            .arg(css(look::frame), css(look::focus), css(look::disabledBoxFill), css(look::disabledBoxText),
                 css(look::disabledFrame)));
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
