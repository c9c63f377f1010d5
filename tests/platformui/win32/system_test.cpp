// What only Windows asks of a window: another fineness of the display, and the end of the user's session.

#include "platform/ui.h"
#include "platformui/driver.h"

#include <memory>
#include <vector>

#include <windows.h>

#include <gtest/gtest.h>

namespace kst::platform {
namespace {

constexpr int textBox = 12;
constexpr int saved = 5;
constexpr Colour background{1, 2, 3};
constexpr Colour mark{250, 120, 10};

class Owner : public WindowEvents {
public:
    void paint(Painter& painter, const Rect& dirty) override {
        painter.fill(dirty, background);
        painter.fill({300, 100, 310, 110}, mark);
    }
    void clicked(int) override {}
    void entered(int) override {}
    void closeRequested() override {
        if (window != nullptr) {
            window->post(saved);
        }
    }
    void posted(int message) override {
        messages.push_back(message);
        quitMessageLoop(message);
    }

    Window* window = nullptr;
    std::vector<int> messages;
};

class SystemsWishes : public ::testing::Test {
protected:
    SystemsWishes() : window(createWindow("Title", 30, 40, 400, 200, owner)) {
        owner.window = window.get();
        ControlDescription box;
        box.id = textBox;
        box.kind = ControlKind::TextBox;
        box.area = {10, 30, 110, 46};
        box.enabled = true;
        window->addControl(box);
        window->show();
        test::settle();
        handle = FindWindowW(L"Kestrane_P3D", L"Title");
    }

    Owner owner;
    std::unique_ptr<Window> window;
    HWND handle = nullptr;
};

TEST_F(SystemsWishes, FinerDisplayEnlargesTheWindowAsAWhole) {
    constexpr int halfAsFineAgain = 144;
    const RECT suggested = {50, 60, 700, 400};
    SendMessageW(handle, WM_DPICHANGED, MAKEWPARAM(halfAsFineAgain, halfAsFineAgain),
                 reinterpret_cast<LPARAM>(&suggested));
    RedrawWindow(handle, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    EXPECT_EQ(window->x(), 50);
    EXPECT_EQ(window->y(), 60);
    RECT client = {};
    GetClientRect(handle, &client);
    EXPECT_EQ(client.right, 600);
    // The caption is as high as that of the display it really is on.
    EXPECT_TRUE(client.bottom >= 300 || GetDpiForWindow(handle) > halfAsFineAgain) << client.bottom;
    RECT box = {};
    GetWindowRect(GetDlgItem(handle, textBox), &box);
    MapWindowPoints(nullptr, handle, reinterpret_cast<POINT*>(&box), 2);
    EXPECT_EQ(box.left, 15);
    EXPECT_EQ(box.top, 45);
    EXPECT_EQ(box.right, 165);
    EXPECT_EQ(box.bottom, 69);
    const HDC context = GetDC(handle);
    EXPECT_EQ(GetPixel(context, 464, 164), RGB(mark.red, mark.green, mark.blue));
    EXPECT_EQ(GetPixel(context, 466, 164), RGB(background.red, background.green, background.blue));
    ReleaseDC(handle, context);
}

TEST_F(SystemsWishes, EndOfTheSessionWaitsUntilTheProgramHasSaved) {
    EXPECT_EQ(SendMessageW(handle, WM_QUERYENDSESSION, 0, 0), TRUE);
    EXPECT_TRUE(owner.messages.empty());
    SendMessageW(handle, WM_ENDSESSION, FALSE, 0);
    EXPECT_TRUE(owner.messages.empty()) << "somebody else refused";
    SendMessageW(handle, WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(owner.messages, std::vector<int>{saved});
    EXPECT_EQ(runMessageLoop(), saved) << "the loop outside must end as well";
}

TEST_F(SystemsWishes, MinimisedWindowKeepsItsPlace) {
    ShowWindow(handle, SW_MINIMIZE);
    test::settle();
    EXPECT_EQ(window->x(), 30);
    EXPECT_EQ(window->y(), 40);
}

} // namespace
} // namespace kst::platform
