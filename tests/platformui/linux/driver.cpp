#include "platformui/driver.h"

#include <stdexcept>

#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTextDocumentFragment>
#include <QWidget>
#include <QWindow>

namespace kst::test {

namespace {

QWidget& window() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isWindow() && widget->objectName().isEmpty() &&
            !widget->findChildren<QWidget*>().isEmpty()) {
            return *widget;
        }
    }
    throw std::runtime_error("there is no window");
}

template <typename Widget = QWidget>
Widget& control(int controlId) {
    auto* const found = window().findChild<Widget*>(QString::number(controlId));
    if (found == nullptr) {
        throw std::runtime_error("there is no control " + std::to_string(controlId));
    }
    return *found;
}

void sendKey(QWidget& widget, int key, const QString& text = {}) {
    for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
        QKeyEvent event(type, key, Qt::NoModifier, text);
        QApplication::sendEvent(&widget, &event);
    }
}

QString toQt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

void settle() {
    for (int round = 0; round < 5; ++round) {
        QApplication::sendPostedEvents();
        QApplication::processEvents();
    }
}

void clickControl(int controlId) {
    auto& widget = control(controlId);
    const QPointF centre = QRectF(widget.rect()).center();
    const QPointF global = widget.mapToGlobal(centre);
    QMouseEvent press(QEvent::MouseButtonPress, centre, global, Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QMouseEvent release(QEvent::MouseButtonRelease, centre, global, Qt::LeftButton, Qt::NoButton,
                        Qt::NoModifier);
    QApplication::sendEvent(&widget, &press);
    QApplication::sendEvent(&widget, &release);
}

void pressSpace(int controlId) {
    sendKey(control(controlId), Qt::Key_Space, QStringLiteral(" "));
}

void pressEnter(int controlId) {
    sendKey(control(controlId), Qt::Key_Return, QStringLiteral("\r"));
}

void typeText(int controlId, std::string_view text) {
    auto& box = control<QLineEdit>(controlId);
    box.end(false);
    for (const QChar letter : toQt(text)) {
        sendKey(box, Qt::Key_unknown, letter);
    }
}

void pasteText(int controlId, std::string_view text) {
    QApplication::clipboard()->setText(toQt(text));
    auto& box = control<QLineEdit>(controlId);
    box.end(false);
    box.paste();
}

bool isChecked(int controlId) {
    return control<QCheckBox>(controlId).isChecked();
}

void toggleAccessibly(int controlId) {
    control<QCheckBox>(controlId).toggle();
}

int pressTab() {
    window().activateWindow();
    settle();
    QWidget* const focused = QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : &window();
    sendKey(*focused, Qt::Key_Tab, QStringLiteral("\t"));
    return QApplication::focusWidget() == nullptr ? 0 : QApplication::focusWidget()->objectName().toInt();
}

void focusControl(int controlId) {
    window().activateWindow();
    settle();
    control(controlId).setFocus(Qt::TabFocusReason);
    settle();
}

void clickCloseButton() {
    window().close();
}

bool windowIsVisible() {
    return window().isVisible();
}

int windowWidth() {
    return window().width();
}

int windowHeight() {
    return window().height();
}

bool windowCanBeResized() {
    const QSize before = window().size();
    window().resize(before * 2);
    return window().size() != before;
}

bool windowIsTopMost() {
    return window().windowHandle()->flags().testFlag(Qt::WindowStaysOnTopHint);
}

std::string shownToolTip(int controlId) {
    return QTextDocumentFragment::fromHtml(control(controlId).toolTip()).toPlainText().toStdString();
}

std::string spokenName(int controlId) {
    QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(&control(controlId));
    return spoken == nullptr ? std::string() : spoken->text(QAccessible::Name).toStdString();
}

bool namesAreTaken() {
    return true;
}

platform::Colour pixelAt(int x, int y) {
    const QImage image = window().grab().toImage();
    const auto middle = [&](int layoutPixel) {
        return static_cast<int>((layoutPixel + 0.5) * image.devicePixelRatio());
    };
    const QColor colour = image.pixelColor(middle(x), middle(y));
    return {static_cast<std::uint8_t>(colour.red()), static_cast<std::uint8_t>(colour.green()),
            static_cast<std::uint8_t>(colour.blue())};
}

std::uint64_t lookOf(int controlId) {
    const QImage image = control(controlId).grab().toImage().convertToFormat(QImage::Format_RGB32);
    return qHashBits(image.constBits(), static_cast<std::size_t>(image.sizeInBytes()));
}

} // namespace kst::test
