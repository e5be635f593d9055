#include "programs/mailticker/look.h"

// A function of newer Windows versions; null on older ones.
template <class Function>
static Function* Newer(const char* name) {
    return reinterpret_cast<Function*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

static int DpiOf(HWND window) {
    if (auto* const forWindow = Newer<UINT WINAPI(HWND)>("GetDpiForWindow"); window && forWindow)
        if (const UINT dpi = forWindow(window))
            return static_cast<int>(dpi);
    return GetDeviceCaps(WindowDc(nullptr), LOGPIXELSY);
}

static LOGFONTW MessageFont(int dpi) {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    if (auto* const forDpi =
            Newer<BOOL WINAPI(UINT, UINT, void*, UINT, UINT)>("SystemParametersInfoForDpi"))
        if (forDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, dpi))
            return metrics.lfMessageFont;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    return metrics.lfMessageFont;
}

Look::Look(HWND window) : mDpi(DpiOf(window)) {
    LOGFONTW font = MessageFont(mDpi);
    mText.reset(CreateFontIndirectW(&font));
    font.lfWeight = FW_BOLD;
    mBold.reset(CreateFontIndirectW(&font));
    font.lfHeight = MulDiv(font.lfHeight, 5, 4);
    mHeading.reset(CreateFontIndirectW(&font));

    const WindowDc dc(nullptr);
    const Selected selected(dc, mBold.get());
    TEXTMETRICW metrics;
    GetTextMetricsW(dc, &metrics);
    mLineHeight = metrics.tmHeight;
}
