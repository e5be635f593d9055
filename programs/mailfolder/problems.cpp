#include "programs/mailfolder/problems.h"

#include <algorithm>
#include <iterator>

static constexpr char kNeverWritten[] =
    "No command writes to message files; programs show the D file's record.";

static constexpr ProblemKind kProblems[] = {
    // The folder.
    {"interrupted-rewrite", "recover", ""},
    {"leftover-file", "recover", ""},
    {"no-d-file", "rebuild", ""},
    {"not-a-d-file", nullptr,
     "Move it away; then recover finds a backup, or rebuild makes a D file from the message "
     "files."},
    {"two-d-files", nullptr,
     "Programs use one of the two: look at both with list, and move the other away."},
    {"link", nullptr, "Links are not followed: put the file itself in its place."},
    // The D file.
    {"no-header", "rebuild", ""},
    {"used-header", "rebuild", ""},
    {"header-content", "rebuild", ""},
    {"cut-record", "rebuild", ""},
    // Its records.
    {"broken-index", "rebuild", ""},
    {"control-topic", "rebuild", ""},
    {"control-character", "rebuild", ""},
    {"field-length", "rebuild", ""},
    {"field-range", "rebuild", ""},
    {"blank-record", "rebuild", ""},
    {"no-file-name", "rebuild", "Rebuilding leaves the record behind."},
    {"name-leaves-folder", "rebuild", "Rebuilding leaves the record behind."},
    {"missing-file", "rebuild",
     "Look for the file first: rebuilding leaves the record behind, unless --keep-missing is "
     "said."},
    {"second-record", "rebuild", ""},
    // The message files.
    {"file-without-record", "rebuild", ""},
    {"file-of-broken-record", "rebuild", ""},
    {"unreadable-message-file", nullptr,
     "Let it be read: another program may hold it, or its access rights keep you out."},
    {"short-message-file", nullptr, "What is not there cannot be brought back."},
    {"own-record-zero", nullptr, kNeverWritten},
    {"own-record-garbage", nullptr, kNeverWritten},
    {"own-record-damaged", nullptr, kNeverWritten},
    {"own-record-swapped", nullptr, kNeverWritten},
    {"own-record-differs", nullptr, kNeverWritten},
};

const ProblemKind& KindOfProblem(const std::string& what) {
    return *std::find_if(std::begin(kProblems), std::end(kProblems),
                         [&](const ProblemKind& kind) { return kind.what == what; });
}
