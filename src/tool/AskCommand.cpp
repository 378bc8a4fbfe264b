// The command that asks a person a question for a script.
#include "zelvar/base/Translation.h"
#include "zelvar/dialogs/XMessageBox.h"
#include "zelvar/dialogs/core/MessageBoxSet.h"
#include "zelvar/library/ZelvarInit.h"
#include "zelvar/platform/ui/ControlId.h"
#include "zelvar/tool/CommandTable.h"
#include "zelvar/tool/Commands.h"
#include "zelvar/tool/Screen.h"

#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtWidgets/QApplication>
#include <QtWidgets/QCheckBox>
#include <QtWidgets/QDialog>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <iostream>
#include <iterator>

namespace zelvar::tool {

namespace {

constexpr int kCheckBox = 5555;
constexpr std::size_t kMostText = 1 << 20; // bytes read from the standard input

CommandSpec const &kSpec = SpecOf("ask");

struct Named {
    char const *name;
    unsigned value;
};
constexpr Named kSets[] = {
    {"ok", MB_OK},           {"ok-cancel", MB_OKCANCEL},           {"abort-retry-ignore", MB_ABORTRETRYIGNORE},
    {"yes-no", MB_YESNO},    {"yes-no-cancel", MB_YESNOCANCEL},    {"retry-cancel", MB_RETRYCANCEL},
    {"keep", MB_FILEEXISTS}, {"continue-abort", MB_CONTINUEABORT},
};
constexpr Named kIcons[] = {
    {"stop", MB_ICONHAND},           {"question", MB_ICONQUESTION},    {"exclamation", MB_ICONEXCLAMATION},
    {"warning", MB_ICONEXCLAMATION}, {"information", MB_ICONASTERISK},
};

/// What the words ask for; `fault` tells what is wrong with them.
struct Question {
    unsigned type = MB_OK;
    DString text;
    unsigned helpId = 0;
    int press = 0; ///< a button's id; 0 for none
    DString fault;
};

/// A button's text as scripts have it: "Keep existing" is "keep-existing".
DString NameOf(MessageBoxButton const &button) {
    DString name = button.text;
    std::erase(name, '&');
    for (char &c : name)
        c = c == ' ' ? '-' : c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return name;
}

void AddToList(DString &list, DString const &name) {
    if (!list.empty())
        list += ", ";
    list += name;
}

template <std::size_t Count>
unsigned ValueOf(Named const (&names)[Count], Arguments const &arguments, char const *option, DString &fault) {
    if (!arguments.values.contains(option))
        return 0;
    DString all;
    for (Named const &named : names) {
        if (arguments.Value(option) == named.name)
            return named.value;
        AddToList(all, named.name);
    }
    fault = Format("%s is one of %s", option, all.c_str());
    return 0;
}

unsigned NumberOf(Arguments const &arguments, char const *option, unsigned fallback, unsigned least, unsigned most,
                  DString &fault) {
    if (!arguments.values.contains(option))
        return fallback;
    DString const text = arguments.Value(option);
    unsigned number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc{} && end == text.data() + text.size() && number >= least && number <= most)
        return number;
    fault = Format("%s is a number from %u to %u", option, least, most);
    return fallback;
}

DString ReadStandardInput() {
    DString text;
    char c = 0;
    while (text.size() < kMostText && std::cin.get(c))
        text += c;
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

Question QuestionOf(Arguments const &arguments) {
    constexpr unsigned mostButtons = 16;
    Question question;
    DString &fault = question.fault;
    question.type = ValueOf(kSets, arguments, "--buttons", fault) | ValueOf(kIcons, arguments, "--icon", fault);
    question.type |= (NumberOf(arguments, "--default", 1, 1, mostButtons, fault) - 1) << 8U;
    question.helpId = NumberOf(arguments, "--help-id", 0, 0, ~0U, fault);
    if (arguments.values.contains("--help-file"))
        SetMessageBoxHelp({.module = arguments.Value("--help-file")});
    if (arguments.Has("--dont-ask") || arguments.values.contains("--dont-ask"))
        question.type |= MB_DONTASKAGAIN;
    else if (arguments.Has("--check"))
        fault = "--check needs --dont-ask";
    if (arguments.values.contains("--press") && fault.empty()) {
        DString all;
        for (MessageBoxButton const &button : SetOfMessageBox(question.type).buttons) {
            question.press = NameOf(button) == arguments.Value("--press") ? button.id : question.press;
            AddToList(all, NameOf(button));
        }
        if (question.press == 0)
            fault = "--press is one of " + all;
    }
    if (fault.empty())
        question.text = arguments.words.front() == "-" ? ReadStandardInput() : arguments.words.front();
    return question;
}

/// The hand of a script, and of one who cannot see the box.
class Answerer {
public:
    Answerer(Arguments const &arguments, int press, bool attended)
        : m_shot(arguments.Value("--shot")), m_check(arguments.Has("--check")), m_press(press), m_attended(attended) {}

    /// To be called before the box comes up.
    void Wait() {
        if (m_check || m_press != 0 || !m_shot.empty() || !m_attended)
            QTimer::singleShot(0, qApp, [this] { Act(); });
    }
    [[nodiscard]] bool IsShotWritten() const { return m_isShotWritten; }
    [[nodiscard]] bool IsUnanswered() const { return m_isUnanswered; }

private:
    void Act() {
        auto *const box = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (box == nullptr)
            return;
        if (m_check)
            platform::GetDlgItem<QCheckBox>(*box, kCheckBox)->click();
        if (!m_shot.empty())
            m_isShotWritten = box->grab().save(QFile::decodeName(m_shot.c_str()), "PNG");
        if (m_press != 0)
            platform::GetDlgItem<QAbstractButton>(*box, m_press)->click();
        else if (!m_attended) {
            m_isUnanswered = true;
            box->done(QDialog::Rejected); // also one that its user could not leave
        }
    }

    DString m_shot;
    bool m_check;
    int m_press;
    bool m_attended;
    bool m_isShotWritten = true;
    bool m_isUnanswered = false;
};

int Outcome(unsigned type, int answer) {
    int const id = answer & ~static_cast<int>(MB_DONTASKAGAIN);
    for (MessageBoxButton const &button : SetOfMessageBox(type).buttons)
        if (button.id == id) {
            char const *const mark = (type & MB_DONTASKAGAIN) == 0 ? "" : answer == id ? "\tunchecked" : "\tchecked";
            std::printf("%s%s\n", NameOf(button).c_str(), mark);
            return NameOf(button) == "cancel" ? kNothing : kDone;
        }
    return kNothing;
}

} // namespace

int RunAsk(std::vector<DString> const &words, int &argc, char **argv) {
    DString error;
    std::optional<Arguments> const arguments = ParseArguments(kSpec, words, error);
    if (!arguments)
        return UsageError(kSpec, error);
    Question question = QuestionOf(*arguments);
    if (!question.fault.empty())
        return UsageError(kSpec, question.fault);

    bool const attended = ChoosePlatform();
    QApplication const application(argc, argv);
    PrepareWindows(*arguments);
    ZelvarInit();
    bool const wantsHelp = arguments->values.contains("--help-id") || arguments->values.contains("--help-file");
    if (wantsHelp && HasMessageBoxHelp()) // a button that leads nowhere is none
        question.type |= MB_HELP;
    Answerer answerer(*arguments, question.press, attended);
    answerer.Wait();
    DString const checkText = arguments->Value("--dont-ask");
    int const answer = XMessageBox(
        nullptr, question.text.c_str(), arguments->Value("--caption", Translated("Question")).c_str(), question.type,
        arguments->values.contains("--dont-ask") ? checkText.c_str() : nullptr, question.helpId);
    ZelvarShutdown();
    if (!answerer.IsShotWritten())
        return Failure("cannot write '" + arguments->Value("--shot") + "'");
    if (answerer.IsUnanswered()) {
        std::fputs("zelvar: nobody can answer off screen: cancelled (--press NAME answers)\n", stderr);
        return kNothing;
    }
    return Outcome(question.type, answer);
}

} // namespace zelvar::tool
