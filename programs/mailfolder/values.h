#pragma once

#include "programs/console/text.h"
#include "programs/mailfolder/json.h"
#include "programs/mailfolder/tool.h"

// Named values, printed as lines or as one JSON object.
class Values {
public:
    explicit Values(bool json) : mAsJson(json) {}

    void Title(const std::string& text) {
        if (!mAsJson)
            Print("{}\n\n", text);
    }
    void Put(const char* key, const char* label, const std::string& ansi) {
        mJson[key] = Utf8(ansi);
        Line(label, ansi.empty() ? "-" : Printable(ansi));
    }
    void Put(const char* key, const char* label, int number) {
        mJson[key] = number;
        Line(label, std::to_string(number));
    }
    void PutFlag(const char* key, const char* label, bool flag, const char* yes = "yes",
                 const char* no = "no") {
        mJson[key] = flag;
        Line(label, flag ? yes : no);
    }
    void Finish() {
        if (mAsJson)
            PrintJson(mJson);
    }

private:
    void Line(const char* label, const std::string& value) {
        if (!mAsJson)
            Print("  {:<20}{}\n", label, value);
    }

    bool mAsJson;
    Json mJson = Json::object();
};
