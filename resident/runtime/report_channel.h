#pragma once

// The state behind one dispatcher: its count, its outputs and its log file.
class ReportChannel {
public:
    // `source` is the dispatcher's source file; the texts are its complaints.
    struct Texts {
        const char* source;
        const char* nameTooLong;
        const char* invalidCount;
    };

    constexpr explicit ReportChannel(const Texts& texts) : mTexts(texts) {}

    // Makes sure that there is a log file name; every dispatch begins with it.
    void ChooseDefaultName();
    void Report(const char* expression, const char* message, int line, const char* file,
                int buttonMask);
    void SelectOutput(int outputs, const char* logFileName);
    unsigned int Count() const { return static_cast<unsigned int>(miCount); }
    void SetCount(int count);

private:
    void ChooseName(const char* logFileName);
    void Complain(const char* text);

    Texts mTexts;
    int miCount = 0;
    int mfNameChosen = 0;
    int miOutputs = 2;
    char mszLogFileName[256] = {};
};
