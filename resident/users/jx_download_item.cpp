#include "resident/users/jx_download_item.h"

#include <istream>
#include <ostream>

JxDownloadItem::JxDownloadItem() = default;

JxDownloadItem::JxDownloadItem(const RBString& text) : mstrText(text) {}

JxDownloadItem::~JxDownloadItem() = default;

std::ostream& operator<<(std::ostream& out, const JxDownloadItem& item) {
    const char number[] = {static_cast<char>(item.mulNumber & 0xFF),
                           static_cast<char>(item.mulNumber >> 8 & 0xFF)};
    if (out.write(number, sizeof number).good())
        out << item.mstrText;
    return out;
}

std::istream& operator>>(std::istream& in, JxDownloadItem& item) {
    unsigned char number[2];
    if (in.read(reinterpret_cast<char*>(number), sizeof number).good()) {
        item.mulNumber = (item.mulNumber & 0xFFFF0000) | number[1] << 8 | number[0];
        in >> item.mstrText;
    }
    return in;
}
