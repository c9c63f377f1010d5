#include "platform/linux/uiwindow.h"

#include "platform/linux/uicontrols.h"
#include "platform/linux/uipainter.h"
#include "platform/uiplace.h"

#include <algorithm>

#include <QCloseEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QWindow>

namespace kst::platform {

namespace {

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QRect toQt(const Rect& area) {
    return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

Rect fromQt(const QRect& area) {
    return {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()};
}

/// Where windows may be, that of the primary display first.
std::vector<Rect> workAreas() {
    std::vector<Rect> areas;
    for (const QScreen* screen : QGuiApplication::screens()) {
        areas.push_back(fromQt(screen->availableGeometry()));
    }
    return areas;
}

/// A small aircraft on the window's colours, for the task bar.
QIcon drawIcon() {
    constexpr int size = 64;
    const QPolygonF wings({{-3, -8}, {3, -8}, {25, 9}, {25, 14}, {3, 6}, {-3, 6}, {-25, 14}, {-25, 9}});
    const QPolygonF tail({{-2, 15}, {2, 15}, {11, 23}, {11, 26}, {2, 23}, {-2, 23}, {-11, 26}, {-11, 23}});
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(textBoxColour.red, textBoxColour.green, textBoxColour.blue));
    painter.drawRoundedRect(QRectF(1, 1, size - 2, size - 2), 12, 12);
    painter.translate(size / 2.0, size / 2.0);
    painter.rotate(45);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(-3.5, -25, 7, 50), 3.5, 3.5);
    painter.drawPolygon(wings);
    painter.drawPolygon(tail);
    return QIcon(pixmap);
}

} // namespace

QtWindow::QtWindow(std::string_view title, int x, int y, int width, int height, WindowEvents& events)
    : QWidget(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                           Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint),
      events_(events) {
    setWindowTitle(toQt(title));
    setWindowIcon(drawIcon());
    setFixedSize(width, height);
    const Place place = reachablePlace({x, y}, width, workAreas());
    move(place.x, place.y);
    // Every pixel is painted by the owner: nothing to erase first, so nothing flickers.
    setAttribute(Qt::WA_OpaquePaintEvent);
    addWakeupClient(*this);
}

QtWindow::~QtWindow() {
    removeWakeupClient(*this);
}

void QtWindow::addControl(const ControlDescription& control) {
    QWidget* widget = nullptr;
    switch (control.kind) {
    case ControlKind::CheckBox:
        widget = checkBoxes_[control.id] = new CheckBox(this, control.id, events_);
        break;
    case ControlKind::TextBox:
        widget = textBoxes_[control.id] = new TextBox(this, control.id, control.textLimit, events_);
        break;
    case ControlKind::PushButton:
        widget = new PushButton(this, control.id, toQt(control.caption), events_);
        break;
    }
    widget->setObjectName(QString::number(control.id));
    widget->setGeometry(toQt(control.area));
    widget->setAccessibleName(toQt(control.accessibleName));
    widget->setAccessibleDescription(toQt(control.toolTip));
    // As rich text, since only that goes on in a next line.
    widget->setToolTip(QStringLiteral("<qt>%1</qt>").arg(toQt(control.toolTip).toHtmlEscaped()));
    widget->setEnabled(control.enabled);
    controls_[control.id] = widget;
}

void QtWindow::show() {
    // Else the first control has the keyboard, and what was typed for another window works it.
    setFocus();
    QWidget::show();
}

void QtWindow::setChecked(int controlId, bool checked) {
    if (const auto found = checkBoxes_.find(controlId); found != checkBoxes_.end()) {
        found->second->showChecked(checked);
    }
}

void QtWindow::setText(int controlId, std::string_view text) {
    const auto found = textBoxes_.find(controlId);
    if (found == textBoxes_.end()) {
        return;
    }
    // The same text again would lose the operator's cursor.
    if (const QString wanted = toQt(text); found->second->text() != wanted) {
        found->second->setText(wanted);
        found->second->setCursorPosition(0);
    }
}

std::string QtWindow::text(int controlId) const {
    const auto found = textBoxes_.find(controlId);
    return found == textBoxes_.end() ? std::string() : found->second->text().toStdString();
}

void QtWindow::setEnabled(int controlId, bool enabled) {
    const auto found = controls_.find(controlId);
    if (found == controls_.end()) {
        return;
    }
    QWidget* const control = found->second;
    if (!enabled && focusWidget() == control) {
        focused_ = control;
        setFocus();
    }
    control->setEnabled(enabled);
    if (enabled && focused_ == control && focusWidget() == this) {
        control->setFocus();
    }
}

void QtWindow::setTopMost(bool topMost) {
    // Through the native window: QWidget::setWindowFlag would hide it and show it anew.
    if (QWindow* native = windowHandle()) {
        native->setFlag(Qt::WindowStaysOnTopHint, topMost);
        overrideWindowFlags(native->flags());
    } else {
        setWindowFlag(Qt::WindowStaysOnTopHint, topMost);
    }
}

int QtWindow::x() const {
    return QWidget::x();
}

int QtWindow::y() const {
    return QWidget::y();
}

void QtWindow::invalidate(const Rect& area) {
    {
        const std::lock_guard lock(areasMutex_);
        if (std::find(dirtyAreas_.begin(), dirtyAreas_.end(), area) != dirtyAreas_.end()) {
            return;
        }
        dirtyAreas_.push_back(area);
    }
    ringWakeup();
}

void QtWindow::serve() {
    std::vector<Rect> areas;
    {
        const std::lock_guard lock(areasMutex_);
        areas.swap(dirtyAreas_);
    }
    for (const Rect& area : areas) {
        update(toQt(area));
    }
    messages_.deliver(events_);
}

void QtWindow::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    QtPainter surface(painter);
    events_.paint(surface, fromQt(event->rect()));
}

void QtWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    events_.closeRequested();
}

std::unique_ptr<Window> createWindow(std::string_view title, int x, int y, int width, int height,
                                     WindowEvents& events) {
    return std::make_unique<QtWindow>(title, x, y, width, height, events);
}

} // namespace kst::platform
