#pragma once

#include <iosfwd>

#include "resident/core/rb_container.h"
#include "resident/core/rb_string.h"

// A text and a number: a message identifier among those already fetched.
class JX_API JxDownloadItem {
public:
    JxDownloadItem();                              // empty, number 0
    explicit JxDownloadItem(const RBString& text); // number 0
    virtual ~JxDownloadItem();

    const RBString& Text() const { return mstrText; }
    void SetText(const RBString& text) { mstrText = text; }
    unsigned long Number() const { return mulNumber; }
    void SetNumber(unsigned long number) { mulNumber = number; }

    // In a stream: the number's low 16 bits, little-endian, and the text as a string. Reading
    // leaves the number's high 16 bits as they are.
    friend JX_API std::ostream& operator<<(std::ostream& out, const JxDownloadItem& item);
    friend JX_API std::istream& operator>>(std::istream& in, JxDownloadItem& item);

private:
    RBString mstrText;
    unsigned long mulNumber = 0;
};

JX_EXPORTED_CONTAINER(JxDownloadItem);
