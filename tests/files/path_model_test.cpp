// A file specification is a drive and three texts.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "postrider.h"
#include "resident/core/windows_api.h"
#include "tests/support/side_by_side.h"

namespace {

struct Path {
    char drive = 0; // a letter, 0 for none
    std::string path, name, ext;

    bool operator==(const Path&) const = default;
    std::string Folder() const { return (drive ? std::string{drive, ':'} : "") + path; }
    static std::string Clean(std::string text) {
        if (!text.empty() && (text.back() == '.' || (text.back() == '\\' && text.size() >= 4)))
            text.pop_back();
        return text;
    }
    std::string Shown() const {
        return Folder() + "|" + path + "|" + name + "|" + ext + "|" + Folder() + name + ext + "|" +
               Clean(Folder() + name + (ext.size() > 1 ? ext : "")) + "|" + Clean(Folder()) + "|" +
               name + ext;
    }

    int Build(char letter, const std::string& newPath, const std::string& newName,
              const std::string& newExt, bool all) {
        const auto set = [all](std::string& part, const std::string& text) {
            if (all || !text.empty())
                part = text;
        };
        if (letter) {
            const char upper = static_cast<char>(std::toupper(letter));
            if (upper < 'A' || upper > 'Z')
                return 340;
            drive = upper;
        } else if (all) {
            drive = 0;
        }
        if (newName.size() > 260)
            return 344;
        set(name, newName);
        if (newExt.size() > 260)
            return 345;
        set(ext, newExt);
        if (newPath.empty()) {
            set(path, "");
            return 0;
        }
        if (newPath.find("\\\\", 1) != newPath.npos)
            return 346;
        const std::string whole =
            newPath.back() == '\\' ? newPath.substr(0, newPath.size() - 1) : newPath;
        if (whole.size() - (whole.rfind('\\') + 1) > 260)
            return 343;
        if (whole.size() + (newPath[0] != '\\') > 260)
            return 342;
        path = (newPath[0] == '\\' ? "" : "\\") + newPath + (newPath.back() == '\\' ? "" : "\\");
        return 0;
    }
    int Parse(std::string text, bool all) {
        if (text.empty())
            return 347;
        char letter = 0;
        if (text.size() > 1 && text[1] == ':') {
            letter = text[0];
            text.erase(0, 2);
        }
        const std::size_t behind = text.find_last_of("\\/") + 1;
        std::string last = text.substr(behind), folder = text.substr(0, behind);
        if (last == "." || last == "..")
            folder += last, last = "";
        const std::size_t dot = std::min(last.rfind('.'), last.size());
        return Build(letter, folder, last.substr(0, dot), last.substr(dot), all);
    }
    int ForcePath(const std::string& text, bool all) {
        return Parse(text + (!text.empty() && text.back() == '\\' ? "" : "\\"), all);
    }
    void Append(const std::string& sub) {
        if (path.empty())
            ForcePath(sub, false);
        else if (!sub.empty())
            path += (path.back() == '\\' ? sub.substr(sub[0] == '\\')
                                         : (sub[0] == '\\' ? "" : "\\") + sub) +
                    (sub.back() == '\\' && sub != "\\" ? ""
                     : sub == "\\"                     ? ""
                                                       : "\\");
    }
    void Descend() {
        const std::size_t last = path.rfind('\\');
        if (last != path.npos && last != path.find('\\'))
            path.erase(path.rfind('\\', last - 1) + 1);
    }
    std::string Key() const {
        std::string key = name + (ext.size() > 1 ? ext.substr(1) : "");
        std::transform(key.begin(), key.end(), key.begin(),
                       [](unsigned char c) { return std::toupper(c); });
        return key;
    }
};

const std::string kSet = "\\*:\".?/<>";

int Valid(const std::string& text, const std::string& set, bool strict) {
    if (set.empty())
        return 347;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (set.find(text[i]) != set.npos && text[i] != '.' &&
            (strict || !(text[i] == '\\' || (text[i] == ':' && i == 1))))
            return 346;
    return 0;
}

// The file name made of any text; empty when there is none.
std::string Hashed(const std::string& source, const std::string* ext, const std::string& set) {
    std::string output;
    std::size_t at = 0;
    const auto startsExt = [&] { return source[at] == '.' && at + 1 < source.size(); };
    for (unsigned int count = 0; at < source.size() && count < 260; ++at) {
        const auto c = static_cast<unsigned char>(source[at]);
        if (c < 32)
            continue;
        if (ext && count > 0 && startsExt())
            break;
        char code[3];
        std::snprintf(code, sizeof code, "%02x", c);
        output += c < 128 && set.find(source[at]) == set.npos ? std::string(1, source[at]) : code;
        ++count;
    }
    if (ext) {
        while (at < source.size() && !startsExt())
            ++at;
        if (at < source.size()) {
            std::string own;
            for (const unsigned char c : source.substr(at + 1))
                if (own.size() < 259 && c > 32 && c < 127 && set.find(char(c)) == set.npos)
                    own += char(c);
            output += "." + (own.empty() ? *ext : own);
        } else if (!ext->empty()) {
            output += (ext->front() == '.' ? "" : ".") + *ext;
        }
    }
    if (output.empty() || Valid(output, kSet, true))
        return "";
    std::transform(output.begin(), output.end(), output.begin(),
                   [](unsigned char c) { return std::toupper(c); });
    return output;
}

class Paths : public SideBySide {
public:
    void Step(Random& random) override {
        const unsigned int i = random.Below(2);
        FileSpec &spec = mSpecs[i], &other = mSpecs[1 - i];
        Path &model = mModels[i], &otherModel = mModels[1 - i];
        const std::string text = AnyText(random), second = AnyText(random);
        const bool flag = random.OneIn(2);
        const unsigned int operation = random.Below(14);
        Say("operation", operation, "on", i, Shown(text), Shown(second), flag);
        switch (operation) {
        case 0:
            Same("parse", spec.Parse(text.c_str(), flag), model.Parse(text, flag));
            break;
        case 1: {
            const char drive = random.Of<char>({0, 'c', 'Z', '[', '@', 'a', 'z', '`', '{'});
            const std::string ext = random.Of<std::string>({"", ".X", ".", std::string(261, 'e')});
            Same("build", spec.Build(drive, text.c_str(), second.c_str(), ext.c_str(), flag),
                 model.Build(drive, text, second, ext, flag));
            break;
        }
        case 2:
            Same("force", spec.ForceToPath(text.c_str(), flag), model.ForcePath(text, flag));
            break;
        case 3:
            Same("set part", spec.SetSpecPart(text.c_str(), flag),
                 flag ? model.ForcePath(text, false) : model.Parse(text, false));
            break;
        case 4: {
            RBString part(text.c_str());
            const int invalid = Valid(text, kSet, false);
            Same("set valid part", spec.SetValidSpecPart(part, flag),
                 invalid ? invalid
                 : flag  ? model.ForcePath(text, false)
                         : model.Parse(text, false));
            break;
        }
        case 5:
            spec.AppendPath(text.c_str());
            model.Append(text);
            break;
        case 6:
            spec.DecendPath();
            model.Descend();
            break;
        case 7:
            spec.SetPath(text.c_str());
            model.path = (!text.empty() && text[0] == '\\' ? "" : "\\") + text + "\\";
            break;
        case 8:
            spec.SetFileExt(text.c_str());
            model.ext = text.empty() ? "" : ((text[0] == '.' ? "" : ".") + text).substr(0, 260);
            break;
        case 9:
            if (random.OneIn(3))
                spec.Reset(), model = Path();
            else
                spec = other, model = otherModel;
            break;
        case 10:
            Same("compare", (spec == other) + 2 * (spec != other) + 4 * (spec < other),
                 (model == otherModel) + 2 * !(model == otherModel) +
                     4 * (lstrcmpA(model.Key().c_str(), otherModel.Key().c_str()) < 0));
            break;
        case 11: {
            RBString tried(text.c_str());
            const std::string set = random.Of<std::string>({"", ".", "\\:", kSet});
            Same("valid path", FileSpec::isValidPathName(tried, set.c_str(), flag),
                 Valid(text, set, flag));
            Same("valid file", FileSpec::isValidFileNoExt(tried, set.c_str()),
                 text.find_first_of(set) == text.npos ? 0 : 346);
            break;
        }
        case 12: {
            const std::string ext = random.Of<std::string>({"", ".EML", "eml"});
            const std::string set = random.Of<std::string>({"", "\\*:\"?/<>", kSet});
            RBString result, source(text.c_str()), given(ext.c_str());
            const int made =
                FileSpec::HashFileName(result, source, flag ? &given : nullptr, set.c_str());
            const std::string name = Hashed(text, flag ? &ext : nullptr, set);
            Same("hashed", std::to_string(made) + result.Text(),
                 name.empty() ? "0NO_NAME" : "1" + name);
            break;
        }
        case 13: {
            const FileSpec made =
                flag ? FileSpec(text.c_str(), 1) : FileSpec(RBString(text.c_str()), 0);
            Path fresh;
            flag ? fresh.ForcePath(text, true) : fresh.Parse(text, true);
            Same("made", Forms(made), fresh.Shown());
            break;
        }
        }
        for (unsigned int k = 0; k < 2; ++k)
            Same("specification", Forms(mSpecs[k]), mModels[k].Shown());
        Same("short extension", spec.ShortFileExt() ? spec.ShortFileExt() : "none",
             model.ext.size() < 2 ? "none" : model.ext.substr(1));
    }

private:
    static std::string AnyText(Random& random) {
        static const std::vector<std::string> words = {
            "C:",   "d:", "1:", "\\", "\\", "\\\\", "A",   "MAIL", "inbox", ".",
            ".DAT", ".b", "..", "/",  "*",  "<",    "a b", "\xE4", "\x01"};
        std::string text;
        for (unsigned int parts = random.Below(7); parts--;)
            text += random.Of(words);
        if (random.OneIn(12))
            text.insert(random.Below(text.size() + 1),
                        random.Of<unsigned int>({255, 258, 260, 261}), 'L');
        return text;
    }
    static std::string Forms(const FileSpec& spec) {
        std::string forms = spec.FullPath();
        forms +=
            std::string("|") + spec.Path().Text() + "|" + spec.FileName() + "|" + spec.FileExt();
        for (const char* (FileSpec::*form)() const :
             {&FileSpec::FullSpec, &FileSpec::FullFileSpec, &FileSpec::FullFilePath,
              &FileSpec::FullFileName})
            forms += std::string("|") + (spec.*form)();
        return forms;
    }

    FileSpec mSpecs[2];
    Path mModels[2];
};

TEST(Models, Paths) { Compare<Paths>(60, 300); }

} // namespace
