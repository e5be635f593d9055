#pragma once

#include <string>
#include <vector>

// Reads and answers the message boxes and report dialogs that this thread opens while it lives.
//
//     MessageBoxes boxes;              // answers each with its default, Ignore or OK
//     boxes.AnswerWith(IDRETRY);       // the next ones with this button
//     ... code that shows a box ...
//     EXPECT_THAT(boxes.Texts(), ElementsAre("..."));
class MessageBoxes {
public:
    struct Box {
        std::string caption;
        std::string text;
        std::vector<int> enabledButtons; // control identifiers, ascending
    };

    MessageBoxes();
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
    ~MessageBoxes();

    void AnswerWith(int button);

    const std::vector<Box>& Shown() const { return mShown; }
    std::vector<std::string> Texts() const;
    // The texts shown since the last call.
    std::vector<std::string> TakeTexts();

private:
    friend struct MessageBoxHook;

    std::vector<Box> mShown;
    int mAnswer;
    void* mHook;
    MessageBoxes* mPrevious;
};

// The text of an assertion's report as the dialog shows it.
std::string ReportText(const std::string& expression, const std::string& message, int line,
                       const std::string& file);
