#include "platform/ui.h"
#include "platform/uiwakeup.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QPalette>
#include <QSocketNotifier>
#include <QStyleFactory>

namespace kst::platform {

namespace {

// Readable by the event loop as a descriptor, writable by a signal handler: Qt's own posted events are
// neither. It lives as long as the process, so that a late writer never meets a closed descriptor.
std::atomic<int> bell{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void answerBell() {
    std::uint64_t rings = 0;
    if (::read(bell.load(), &rings, sizeof rings) < 0 && errno != EAGAIN) {
        return;
    }
    serveWakeupClients();
}

/// The same light look on every desktop: the painted background does not follow a dark theme either.
void setLook() {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QPalette palette(QColor(225, 231, 238));
    palette.setColor(QPalette::ToolTipBase, QColor(255, 255, 225));
    palette.setColor(QPalette::ToolTipText, Qt::black);
    palette.setColor(QPalette::Highlight, QColor(0, 60, 150));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    QApplication::setPalette(palette);
}

class QtToolkit final : public Toolkit {
public:
    QtToolkit() : application_(argumentCount_, arguments_.data()) {
        // Qt takes over the user's locale; numbers of this program never follow it.
        std::setlocale(LC_NUMERIC, "C");
        QApplication::setApplicationName(QStringLiteral("Kestrane_P3D"));
        QApplication::setQuitOnLastWindowClosed(false);
        setLook();
        if (bell.load() < 0) {
            const int descriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
            if (descriptor < 0) {
                throw std::system_error(errno, std::generic_category(), "eventfd");
            }
            bell.store(descriptor);
        }
        notifier_ = std::make_unique<QSocketNotifier>(bell.load(), QSocketNotifier::Read);
        QObject::connect(notifier_.get(), &QSocketNotifier::activated, answerBell);
    }

private:
    // Qt keeps references to these for its whole life. No argument is handed on: the program has no options.
    char name_[13] = "Kestrane_P3D";
    int argumentCount_ = 1;
    std::array<char*, 2> arguments_{name_, nullptr};
    QApplication application_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

} // namespace

void ringWakeup() noexcept {
    const int descriptor = bell.load();
    if (descriptor < 0) {
        return;
    }
    const int savedError = errno;
    const std::uint64_t one = 1;
    // The only failure is a full counter, and then the bell rings already.
    [[maybe_unused]] const auto written = ::write(descriptor, &one, sizeof one);
    errno = savedError;
}

std::unique_ptr<Toolkit> startToolkit() {
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr &&
        std::getenv("QT_QPA_PLATFORM") == nullptr) {
        std::fputs("Kestrane_P3D: there is no display (DISPLAY is not set), so the window is not shown. "
                   "Log.txt tells how the program fares; Ctrl+C closes it.\n",
                   stderr);
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    return std::make_unique<QtToolkit>();
}

int runMessageLoop() {
    return QApplication::exec();
}

void quitMessageLoop(int result) {
    QCoreApplication::exit(result);
}

} // namespace kst::platform
