#include "tests/support/turns.h"

#include "resident/core/windows_api.h"

Turns::Turns(const std::string& name)
    : mGo(CreateEventA(nullptr, FALSE, FALSE, (name + "Go").c_str())),
      mStopped(CreateEventA(nullptr, FALSE, FALSE, (name + "Stopped").c_str())),
      mMapping(CreateFileMappingA(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Part),
                                  (name + "Part").c_str())),
      mPart(static_cast<Part*>(MapViewOfFile(mMapping, FILE_MAP_WRITE, 0, 0, sizeof(Part)))) {}

Turns::~Turns() {
    UnmapViewOfFile(mPart);
    for (void* handle : {mGo, mStopped, mMapping})
        CloseHandle(handle);
}

void Turns::End() const {
    *mPart->steps = 0;
    SetEvent(mGo);
}

bool Turns::Stopped() const { return WaitForSingleObject(mStopped, 60000) == WAIT_OBJECT_0; }

bool Turns::Go(long calls) const {
    mPart->calls = calls;
    SetEvent(mGo);
    return Stopped();
}

void Turns::Stop() const { SignalObjectAndWait(mStopped, mGo, INFINITE, FALSE); }

void Turns::Call() const {
    if (mPart->calls > 0 && --mPart->calls == 0)
        Stop();
}
