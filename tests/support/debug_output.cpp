#include "tests/support/debug_output.h"

#include "resident/core/windows_api.h"

static DebugOutput* current;

struct DebugOutputHandler {
    static LONG CALLBACK Handle(EXCEPTION_POINTERS* exception) {
        const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        constexpr DWORD kPrint = 0x40010006; // DBG_PRINTEXCEPTION_C: length with the zero, address
        if (record.ExceptionCode != kPrint || !current || record.NumberParameters < 2)
            return EXCEPTION_CONTINUE_SEARCH;
        current->mTexts.push_back(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
        return EXCEPTION_CONTINUE_EXECUTION;
    }
};

DebugOutput::DebugOutput() {
    current = this;
    mHandler = AddVectoredExceptionHandler(1, DebugOutputHandler::Handle);
}

DebugOutput::~DebugOutput() {
    RemoveVectoredExceptionHandler(mHandler);
    current = nullptr;
}

std::vector<std::string> DebugOutput::TakeTexts() {
    std::vector<std::string> texts = std::move(mTexts);
    mTexts.clear();
    return texts;
}
