#include "zelvar/tool/ManualPages.h"

#include "zelvar/tool/CommandTable.h"

#include <algorithm>
#include <cctype>

namespace zelvar::tool {

namespace {

constexpr char kSummary[] = "pick image data in dialogs, list and describe it";

/// A line of text: what the macros would take for their own is escaped.
DString Roff(std::string_view text) {
    DString line;
    for (char const c : text) {
        if (c == '\\')
            line += "\\e";
        else if (c == '-')
            line += "\\-";
        else if ((c == '.' || c == '\'') && line.empty())
            line += DString("\\&") + c;
        else
            line += c;
    }
    return line;
}

/// `text` with its first letter as `turn` has it; the texts here are ASCII.
DString WithFirst(DString text, int (*turn)(int)) {
    text.front() = static_cast<char>(turn(static_cast<unsigned char>(text.front())));
    return text;
}

/// What stands behind a name: a sentence's words, without what follows them.
DString SummaryOf(CommandSpec const &spec) {
    return WithFirst(Split(spec.about, '.').front(), [](int c) { return std::tolower(c); });
}

DString Bold(std::string_view text) { return "\\fB" + Roff(text) + "\\fR"; }
DString Slanted(std::string_view text) { return text.empty() ? DString() : "\\fI" + Roff(text) + "\\fR"; }

DString Head(DString const &title, DString const &summary, DString const &version) {
    DString upper = title;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
    return ".TH " + Roff(upper) + " 1 \"\" \"Zelvar " + version + "\" \"User Commands\"\n.SH NAME\n" + Roff(title) +
           " \\- " + Roff(summary) + "\n";
}

/// A term with its meaning below it.
DString Entry(DString const &term, DString const &meaning) { return ".TP\n" + term + "\n" + meaning + "\n"; }

DString Words(std::string_view used) {
    DString text;
    for (auto const &[word, meaning] : WordsIn(used))
        text += Entry(Slanted(word), Roff(meaning) + ".");
    return text.empty() ? text : ".SH WORDS\n" + text;
}

DString ExitStatus() {
    DString text = ".SH \"EXIT STATUS\"\n";
    for (auto const &[code, meaning] : ExitCodes())
        text += Entry(Bold(Format("%d", code)), Roff(meaning) + ".");
    return text;
}

DString OptionTerm(OptionSpec const &option) {
    DString const value = Slanted(option.value);
    if (option.use == OptionSpec::Use::OptionalValue)
        return Bold(option.name) + "[=" + value + "]";
    return Bold(option.name) + (value.empty() ? "" : " ") + value;
}

/// "a, b (default of x), c": the words alone, for what takes one of a few.
DString Choices(std::string_view word) {
    DString list;
    for (auto const &[name, meaning] : WordsIn(word))
        if (std::string_view(name) == "KIND" || std::string_view(name) == "SET" || std::string_view(name) == "TYPE" ||
            std::string_view(name) == "WHERE")
            for (DString const &piece : Split(meaning, ','))
                list += (list.empty() ? "" : " ") + Split(Trimmed(piece), ' ').front();
    return list;
}

/// A shell's pattern and what it does where it fits.
DString Case(DString const &pattern, DString const &what) { return "    " + pattern + ") " + what + " ;;\n"; }

DString Offer(DString const &words) { return "COMPREPLY=($(compgen -W '" + words + "' -- \"$cur\"))"; }

} // namespace

DString ManualPage(DString const &version) {
    DString text = Head("zelvar", kSummary, version);
    text += ".SH SYNOPSIS\n" + Bold("zelvar") + " " + Slanted("COMMAND") + " [" + Slanted("OPTION") + "]...\n";
    text += ".SH COMMANDS\n";
    DString also;
    for (CommandSpec const &spec : AllCommands()) {
        text += Entry(Bold(spec.name) + " " + Slanted(spec.words), Roff(spec.about));
        also += (also.empty() ? "" : ",\n") + (".BR " + Roff(DString("zelvar-") + spec.name) + " (1)");
    }
    return text + Words("PLACE MONIKER") + ExitStatus() + ".SH \"SEE ALSO\"\n" + also + "\n";
}

DString ManualPage(CommandSpec const &spec, DString const &version) {
    DString const about = spec.about;
    DString text = Head(DString("zelvar-") + spec.name, SummaryOf(spec), version);
    text += ".SH SYNOPSIS\n" + Roff("zelvar " + Synopsis(spec)) + "\n.SH DESCRIPTION\n" + Roff(about) + "\n";
    if (!spec.options.empty())
        text += ".SH OPTIONS\n";
    for (OptionSpec const &option : spec.options)
        text += Entry(OptionTerm(option), Roff(option.about) + ".");
    return text + Words(Synopsis(spec)) + ExitStatus() + ".SH \"SEE ALSO\"\n.BR zelvar (1)\n";
}

DString BashCompletion() {
    DString commands;
    DString values;
    DString options;
    for (CommandSpec const &spec : AllCommands()) {
        commands += (commands.empty() ? "" : " ") + DString(spec.name);
        DString names = "--help";
        for (OptionSpec const &option : spec.options) {
            names += DString(" ") + option.name;
            if (DString const choices = Choices(option.value); !choices.empty())
                values += Case(DString(spec.name) + "\\ " + option.name, Offer(choices) + "; return");
        }
        options += Case(spec.name, Offer(names));
    }
    return "# bash completion for zelvar\n"
           "_zelvar() {\n"
           "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}\n"
           "  COMPREPLY=()\n"
           "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "    " +
           Offer(commands + " help --help --version") +
           "\n    return\n"
           "  fi\n"
           "  case \"$command $prev\" in\n" +
           values +
           "  esac\n"
           "  [[ $cur == -* ]] || return 0\n"
           "  case $command in\n" +
           options +
           "  esac\n"
           "}\n"
           "complete -o default -F _zelvar zelvar\n";
}

} // namespace zelvar::tool
