#include "programs/mailfolder/recursion.h"

#include <vector>

#include "programs/mailfolder/folder.h"
#include "programs/mailfolder/leftovers.h"
#include "programs/mailfolder/shared_read.h"
#include "resident/files/file_handle.h"

Command::Run AddLook(CLI::App& app, Look atOne, Look atAll) {
    const auto given = std::make_shared<LookOptions>();
    AddFolder(app, given->folder);
    app.add_flag("-r,--recursive", given->recursive,
                 "Every folder below, too: a line each, and a summary");
    AddJson(app, given->json);
    return [=] { return (given->recursive ? atAll : atOne)(*given); };
}

static std::vector<Path> FoldersIn(const Path& folder) {
    std::vector<Path> folders;
    WIN32_FIND_DATAW found;
    const SearchHandle search(FindFirstFileW(folder.Child(L"*").Full().c_str(), &found));
    if (!search)
        Fail("Cannot look into {}: {}.", folder.Shown(), LastErrorText());
    do {
        const std::wstring name = found.cFileName;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && name != L"." && name != L"..")
            folders.push_back(folder.Child(name));
    } while (FindNextFileW(search.Get(), &found));
    std::sort(folders.begin(), folders.end(),
              [](const Path& a, const Path& b) { return a.Full() < b.Full(); });
    // One that is gone, or cannot be opened by its name, is told of when it is looked into.
    std::erase_if(folders, [](const Path& path) { return path.What() == Path::keLink; });
    return folders;
}

static bool Has(const Path& folder, Which which) {
    for (const wchar_t* name : {L"DFile", L"MFile"})
        if (folder.Child(name).IsThere() ||
            FindLeftovers(folder.Child(name)).state == Leftovers::Missing)
            return true;
    return which == Which::WithMail && FileNames(folder).MessageFiles() > 0;
}

int ForEachFolder(const Path& top, Which which, bool json,
                  const std::function<FolderLine(const Path&)>& tell,
                  const std::function<FolderLine()>& summary) {
    if (!top.IsFolder())
        Fail("Cannot look below {}: it is no folder.", top.Shown());
    std::optional<JsonList> lines;
    if (json)
        lines.emplace(Json{{"folder", top.Given()}}, "folders");
    int worst = keFine;
    unsigned long long count = 0;
    std::vector<Path> waiting = {top};
    while (!waiting.empty()) {
        const Path folder = waiting.back();
        waiting.pop_back();
        try {
            const std::vector<Path> below = FoldersIn(folder);
            waiting.insert(waiting.end(), below.rbegin(), below.rend());
            if (!Has(folder, which))
                continue;
            ++count;
            const FolderLine line = tell(folder);
            worst = std::max<int>(worst, line.code);
            if (lines)
                lines->Add(line.json);
            else
                Print("{}: {}\n", folder.Shown(), line.text);
        } catch (const Failure& failure) {
            worst = std::max<int>(worst, keCouldNot);
            Warn("{}\n", failure.text);
        }
    }
    if (count == 0 && worst == keFine) {
        Warn("There is no mail folder in {}, or below.\n", top.Shown());
        worst = keCouldNot;
    }
    const FolderLine all = summary();
    if (lines)
        lines->Finish(all.json);
    else
        Tell("{}: {}\n", Count(count, "folder"), all.text);
    return worst;
}
