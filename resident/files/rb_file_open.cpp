// RbFile: construction, opening and the stream.

#include <climits>
#include <io.h>
#include <utility>

#include "resident/files/error_mode.h"
#include "resident/files/oem_name.h"
#include "resident/files/open_stream.h"
#include "resident/files/rb_file.h"
#include "resident/runtime/check.h"

static constexpr Reporter kReports("JXRESIDT\\RBFILE1.CPP");

char RbFile::szTranslatedString[keOemNameSize];

RbFile::RbFile() = default;

RbFile::RbFile(const char* spec) : FileSpec(spec) {}

RbFile::RbFile(RBString& spec) : FileSpec(spec) {}

RbFile::RbFile(const RbFile& other) : std::ios(), FileSpec(other), std::fstream() {}

RbFile::RbFile(const FileSpec& spec) : FileSpec(spec) {}

RbFile& RbFile::operator=(const RbFile& other) {
    FileSpec::operator=(other);
    return *this;
}

RbFile& RbFile::operator=(const FileSpec& spec) {
    FileSpec::operator=(spec);
    return *this;
}

RbFile::~RbFile() {
    kReports.CheckAt(35, !isOpen(), "!isOpen()",
                     "Destructor of RbFile is called when file is still OPEN");
}

bool RbFile::DoOpen(const char* name, int mode, int prot) {
    const CriticalErrorsFail guard;
    // The name that is opened, and recorded, is the converted one, which open() converts again.
    ConvertToOem(name, szTranslatedString);
    open(szTranslatedString, mode, prot);
    return rdstate() == std::ios::goodbit;
}

bool RbFile::Open(int mode, int prot) { return DoOpen(FullFileSpec(), mode, prot); }

bool RbFile::OpenSilent(int mode, int prot) { return DoOpen(FullFileSpec(), mode, prot); }

void RbFile::open(const char* name, int mode, int) {
    SetSpecPart(name, keAsParts);
    const CriticalErrorsFail guard;
    ConvertToOem(name, szTranslatedString);
    OpenStream(*this, szTranslatedString, mode);
}

void RbFile::open(const unsigned char* name, int mode, int prot) {
    open(reinterpret_cast<const char*>(name), mode, prot);
}

RbFile& RbFile::read(char* buffer, int size) {
    std::fstream::read(buffer, size);
    return *this;
}

RbFile& RbFile::read(unsigned char* buffer, int size) {
    return read(reinterpret_cast<char*>(buffer), size);
}

RbFile& RbFile::write(const char* buffer, int size) {
    std::fstream::write(buffer, size);
    return *this;
}

RbFile& RbFile::write(const unsigned char* buffer, int size) {
    return write(reinterpret_cast<const char*>(buffer), size);
}

RbFile& RbFile::seekg(long position) {
    std::fstream::seekg(position);
    return *this;
}

RbFile& RbFile::seekg(long offset, std::ios::seekdir origin) {
    std::fstream::seekg(offset, origin);
    return *this;
}

// A place behind the 2 GB that the result can name is none.
long RbFile::tellg() {
    const std::streamoff position = std::fstream::tellg();
    return position <= LONG_MAX ? static_cast<long>(position) : -1;
}

void RbFile::SetBufferSize(unsigned int size) { rdbuf()->pubsetbuf(new char[size], size); }

namespace {

// The run-time's file behind a stream.
struct Descriptor : std::filebuf {
    static int Of(std::filebuf& buffer) { return (buffer.*&Descriptor::_M_file).fd(); }
};

} // namespace

int RbFile::UpdateFile() {
    // The seek writes out what is pending and drops what was read ahead of the cut.
    const std::streampos position = tellp();
    // Where a place cannot be told in the cut's number, nothing is cut.
    if (!isOpen() || position == std::streampos(-1) || std::streamoff(position) > LONG_MAX ||
        !seekp(position))
        return 0;
    const int descriptor = Descriptor::Of(*rdbuf());
    _chsize(descriptor, static_cast<long>(position));
    const int duplicate = _dup(descriptor);
    if (duplicate != -1)
        _close(duplicate);
    return 0;
}
