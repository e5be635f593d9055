#include "programs/mailfolder/pref_directory.h"

#include <cstring>
#include <sstream>

#include "programs/mailfolder/input_file.h"
#include "programs/mailfolder/tool.h"

static constexpr char kMagic[] = "PREFRBSW";
// The largest header with its list.
static constexpr std::size_t kLongest = sizeof(JXExtendDatHeader) + 0x10000 * sizeof(AppRecHeader);

PrefDirectory::PrefDirectory(const Path& path) {
    const InputFile file(path);
    size = file.Size();
    std::istringstream list(file.BytesAt(0, kLongest));
    JXExtendDatHeader header;
    if (!(list >> header)) {
        damage = "it is shorter than its header";
        return;
    }
    if (std::memcmp(&header, kMagic, sizeof kMagic - 1) != 0) {
        damage = "it does not begin with \"PREFRBSW\"";
        return;
    }
    const unsigned int count = static_cast<unsigned short>(header.number);
    for (AppRecHeader block; blocks.size() < count && list >> block;)
        blocks.push_back(block);
    if (blocks.size() < count)
        damage = "it ends inside its list of " + Count(count, "block");
}

bool PrefDirectory::Holds(const AppRecHeader& block) const {
    return block.Offset() + 0ull + static_cast<unsigned short>(block.size) <= size;
}
