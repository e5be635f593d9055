#include "programs/mailticker/number_icon.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "programs/mailticker/resource.h"

namespace {

// A square picture whose dots can be reached: 0xAARRGGBB, row by row from above.
class Picture {
public:
    explicit Picture(int size) : mSize(size), mDc(CreateCompatibleDC(nullptr)) {
        BITMAPINFO info = {};
        info.bmiHeader = {sizeof info.bmiHeader, size, -size, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        mBitmap.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS,
                                       reinterpret_cast<void**>(&mDots), nullptr, 0));
        SelectObject(mDc.get(), mBitmap.get());
    }

    HDC Dc() const { return mDc.get(); }
    std::uint32_t& At(int x, int y) { return mDots[y * mSize + x]; }

    Owned<HICON> ToIcon() const {
        // The alpha channel does what the mask did.
        const Owned<HBITMAP> mask(CreateBitmap(mSize, mSize, 1, 1, nullptr));
        ICONINFO info = {TRUE, 0, 0, mask.get(), mBitmap.get()};
        return Owned<HICON>(CreateIconIndirect(&info));
    }

private:
    int mSize;
    Owned<HBITMAP> mBitmap;
    Owned<HDC> mDc; // goes first, and lets go of the bitmap
    std::uint32_t* mDots = nullptr;
};

} // namespace

static Owned<HFONT> DigitFont(int height) {
    LOGFONTW font = {};
    font.lfHeight = -height;
    font.lfWeight = FW_BOLD;
    font.lfQuality = ANTIALIASED_QUALITY;
    lstrcpyW(font.lfFaceName, L"Tahoma");
    return Owned<HFONT>(CreateFontIndirectW(&font));
}

// The number in white on the lower part, on a plate with its corners cut.
static void DrawPlate(Picture& picture, const std::wstring& text, std::uint32_t colour, int size) {
    RECT plate = {0, size * 5 / 16, size, size};
    if (text.size() == 1)
        plate.left = size * 5 / 16;
    const auto isCorner = [&](int x, int y) {
        return (x == plate.left || x == plate.right - 1) &&
               (y == plate.top || y == plate.bottom - 1);
    };
    const auto forEachDot = [&](auto change) {
        for (int y = plate.top; y < plate.bottom; ++y)
            for (int x = plate.left; x < plate.right; ++x)
                if (!isCorner(x, y))
                    change(picture.At(x, y));
    };
    forEachDot([&](std::uint32_t& dot) { dot = 0xFF000000 | colour; });
    const auto font = DigitFont(text.size() > 2 ? size * 9 / 16 : size * 12 / 16);
    const Selected selected(picture.Dc(), font.get());
    SetBkMode(picture.Dc(), TRANSPARENT);
    SetTextColor(picture.Dc(), RGB(255, 255, 255));
    DrawTextW(picture.Dc(), text.c_str(), -1, &plate,
              DT_SINGLELINE | DT_CENTER | DT_VCENTER | DT_NOCLIP);
    GdiFlush();
    // Text is drawn without alpha.
    forEachDot([](std::uint32_t& dot) { dot |= 0xFF000000; });
}

Owned<HICON> NumberIcon(std::size_t number, IconMood mood, int size) {
    const Owned<HICON> plain(
        static_cast<HICON>(LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_TICKER),
                                      IMAGE_ICON, size, size, LR_DEFAULTCOLOR)));
    Picture picture(size);
    DrawIconEx(picture.Dc(), 0, 0, plain.get(), size, size, 0, nullptr, DI_NORMAL);
    GdiFlush();
    const std::uint32_t colour = mood == IconMood::New      ? 0xC62828
                                 : mood == IconMood::Paused ? 0x6E6E6E
                                                            : 0x1F4E8C;
    if (number > 0 || mood == IconMood::Paused)
        DrawPlate(picture,
                  mood == IconMood::Paused ? L"II"
                  : number > 99            ? L"99+"
                                           : std::to_wstring(number),
                  colour, size);
    return picture.ToIcon();
}
