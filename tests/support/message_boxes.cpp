#include "tests/support/message_boxes.h"

#include <algorithm>
#include <map>

#include "resident/core/windows_api.h"

static MessageBoxes* current;
static HWND waiting;

// A dialog is activated first while it is being set up, and looked at from its message loop, by
// when its controls have their texts and states.
struct MessageBoxHook {
    static BOOL CALLBACK Child(HWND control, LPARAM data) {
        auto& box = *reinterpret_cast<MessageBoxes::Box*>(data);
        char className[64];
        char text[4096];
        GetClassNameA(control, className, sizeof className);
        GetWindowTextA(control, text, sizeof text);
        const int identifier = GetDlgCtrlID(control);
        if (lstrcmpiA(className, "Button") == 0) {
            const bool shown = GetWindowLongA(control, GWL_STYLE) & WS_VISIBLE;
            if (shown && IsWindowEnabled(control))
                box.enabledButtons.push_back(identifier);
        } else if (*text && (identifier == 4 || identifier == 0xFFFF || identifier == -1)) {
            // Of a report dialog the report itself, of a message box its only text.
            if (box.text.empty() || identifier == 4)
                box.text = text;
        }
        return TRUE;
    }

    static void CALLBACK Answer(HWND, UINT, UINT_PTR timer, DWORD) {
        KillTimer(nullptr, timer);
        const HWND window = waiting;
        waiting = nullptr;
        if (!current || !IsWindow(window))
            return;
        MessageBoxes::Box box;
        char caption[256];
        GetWindowTextA(window, caption, sizeof caption);
        box.caption = caption;
        EnumChildWindows(window, Child, reinterpret_cast<LPARAM>(&box));
        std::sort(box.enabledButtons.begin(), box.enabledButtons.end());
        current->mShown.push_back(box);
        int answer = current->mAnswer;
        const bool has =
            std::count(box.enabledButtons.begin(), box.enabledButtons.end(), answer) != 0;
        if (!has && !box.enabledButtons.empty())
            answer = box.enabledButtons.front();
        PostMessageA(window, WM_COMMAND, static_cast<WPARAM>(answer), 0);
    }

    static LRESULT CALLBACK Procedure(int code, WPARAM wParam, LPARAM lParam) {
        const HWND window = reinterpret_cast<HWND>(wParam);
        if (code == HCBT_ACTIVATE && current) {
            char className[16];
            GetClassNameA(window, className, sizeof className);
            if (lstrcmpA(className, "#32770") == 0 && !GetPropA(window, "seen")) {
                SetPropA(window, "seen", reinterpret_cast<HANDLE>(1));
                waiting = window;
                SetTimer(nullptr, 0, 1, Answer);
            }
        }
        return CallNextHookEx(nullptr, code, wParam, lParam);
    }
};

MessageBoxes::MessageBoxes() : mAnswer(1), mPrevious(current) {
    current = this;
    mHook = SetWindowsHookExA(WH_CBT, MessageBoxHook::Procedure, nullptr, GetCurrentThreadId());
}

MessageBoxes::~MessageBoxes() {
    UnhookWindowsHookEx(static_cast<HHOOK>(mHook));
    current = mPrevious;
}

void MessageBoxes::AnswerWith(int button) { mAnswer = button; }

std::vector<std::string> MessageBoxes::Texts() const {
    std::vector<std::string> texts;
    for (const Box& box : mShown)
        texts.push_back(box.text);
    return texts;
}

std::vector<std::string> MessageBoxes::TakeTexts() {
    std::vector<std::string> texts = Texts();
    mShown.clear();
    return texts;
}

std::string ReportText(const std::string& expression, const std::string& message, int line,
                       const std::string& file) {
    std::string text = "Assert Failed!\n";
    if (!expression.empty())
        text += expression + "\n";
    if (!message.empty())
        text += message + "\n";
    if (line)
        text += std::to_string(line) + "\n";
    if (!file.empty())
        text += file + "\n";
    return text;
}
