#include "platform/win32/uitooltips.h"

#include "platform/uilook.h"
#include "platform/win32/utf16.h"

#include <array>

#include <commctrl.h>
#include <initguid.h>
#include <oleacc.h>

namespace kst::platform {

namespace {

/// The tip of an area of the window, which is what the mouse meets where a control is disabled.
TOOLINFOW areaTool(HWND window, int controlId, const RECT& area) {
    TOOLINFOW tool = {};
    tool.cbSize = TTTOOLINFOW_V1_SIZE;
    tool.uFlags = TTF_SUBCLASS;
    tool.hwnd = window;
    tool.uId = static_cast<UINT_PTR>(controlId);
    tool.rect = area;
    return tool;
}

void send(HWND tips, UINT message, TOOLINFOW& tool) {
    SendMessageW(tips, message, 0, reinterpret_cast<LPARAM>(&tool));
}

} // namespace

ToolTips::ToolTips(HWND window)
    : window_(window),
      tips_(CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
                            CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr,
                            GetModuleHandleW(nullptr), nullptr)) {}

ToolTips::~ToolTips() {
    DestroyWindow(tips_);
}

void ToolTips::add(HWND control, int controlId, const RECT& area, std::string_view text) {
    std::wstring wide = wideFromUtf8(text);
    TOOLINFOW tool = areaTool(window_, controlId, area);
    tool.lpszText = wide.data();
    send(tips_, TTM_ADDTOOLW, tool);
    tool.uFlags = TTF_SUBCLASS | TTF_IDISHWND;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    send(tips_, TTM_ADDTOOLW, tool);
}

void ToolTips::move(int controlId, const RECT& area) {
    TOOLINFOW tool = areaTool(window_, controlId, area);
    send(tips_, TTM_NEWTOOLRECTW, tool);
}

void ToolTips::rescale(const Scale& scale, HFONT font) {
    SendMessageW(tips_, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, scale.device(look::widestToolTip));
}

SpokenNames::SpokenNames() {
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&service_)))) {
        service_ = nullptr;
    }
}

SpokenNames::~SpokenNames() {
    if (service_ != nullptr) {
        service_->Release();
    }
}

void SpokenNames::set(HWND control, std::string_view name, std::string_view description) {
    if (service_ == nullptr) {
        return;
    }
    const auto object = static_cast<DWORD>(OBJID_CLIENT);
    service_->SetHwndPropStr(control, object, CHILDID_SELF, PROPID_ACC_NAME, wideFromUtf8(name).c_str());
    service_->SetHwndPropStr(control, object, CHILDID_SELF, PROPID_ACC_DESCRIPTION,
                             wideFromUtf8(description).c_str());
}

void SpokenNames::clear(HWND control) {
    if (service_ != nullptr) {
        const std::array<MSAAPROPID, 2> properties = {PROPID_ACC_NAME, PROPID_ACC_DESCRIPTION};
        service_->ClearHwndProps(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, properties.data(),
                                 static_cast<int>(properties.size()));
    }
}

} // namespace kst::platform
