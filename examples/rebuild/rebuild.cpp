// Makes a folder's directory file anew from its message files, and says what it holds then. A file
// of that name which is there already stays as it is.

#include <cstdio>

#include <postrider/postrider.h>

int main(int argc, char** argv) {
    if (argc != 2 && argc != 3) {
        std::fprintf(stderr, "usage: rebuild FOLDER [DFILE]\n");
        return 2;
    }
    // The library shows failures in a dialog; here they are counted instead.
    RbAssertSelectOutput(RB_OUTPUT_DEBUGGER, nullptr);

    DirectoryFile folder(keDirMessages);
    if (folder.SetSpecPart(argv[1], 1) != FileSpec::keSpecOk ||
        folder.SetSpecPart(argc == 3 ? argv[2] : "DFile", 0) != FileSpec::keSpecOk) {
        std::fprintf(stderr, "That is no name of a folder or a file.\n");
        return 2;
    }
    if (folder.Exists()) {
        std::fprintf(stderr, "%s is there already.\n", folder.FullFileSpec());
        return 1;
    }

    folder.CreateDFile();
    const unsigned int unreadable = RbAssertGetCount();
    if (!folder.GetInfo(keInfoAll)) {
        std::fprintf(stderr, "Cannot make %s.\n", folder.FullFileSpec());
        return 1;
    }
    std::printf("%s: %d messages, %d unprocessed\n", folder.FullFileSpec(), folder.UsedCount(),
                folder.UnprocessedCount());
    if (unreadable) {
        std::fprintf(stderr, "Some message files could not be read.\n");
        return 1;
    }
    return 0;
}
