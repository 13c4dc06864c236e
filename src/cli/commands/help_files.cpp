#include "cli/commands/help_files.h"

#include <algorithm>
#include <string>

#include "cli/commands/commands.h"
#include "cli/commands/help.h"
#include "platform/system/resources.h"
#include "storage/application/info_dictionary.h"

namespace corvane::cli {
namespace {

/// Text as roff shows it: letter by letter, and no line of it a request.
std::string roffText(std::string_view text) {
  std::string escaped;
  bool startsLine = true;
  for (const char letter : text) {
    if (startsLine && (letter == '.' || letter == '\'')) {
      escaped += "\\&";
    }
    if (letter == '\\') {
      escaped += "\\e";
    } else if (letter == '-') {
      escaped += "\\-";
    } else {
      escaped += letter;
    }
    startsLine = letter == '\n';
  }
  return escaped;
}

void writeVerbatim(std::string_view text, std::ostream& out) {
  out << ".PP\n.nf\n" << roffText(text) << (text.ends_with('\n') ? "" : "\n") << ".fi\n";
}

void writeManual(const Command& command, std::ostream& out) {
  out << ".SS \"" << roffText(command.name) << "\"\n"
      << roffText(command.summary) << "\n.PP\n.B " << roffText(synopsis(command)) << '\n';
  for (const Option& option : command.options) {
    out << ".TP\n.B " << roffText(optionText(option)) << '\n' << roffText(option.help);
    if (!option.choices.empty()) {
      out << "\n.br\nOne of: " << roffText(option.choices);
    }
    out << '\n';
  }
  if (!command.explanation.empty()) {
    writeVerbatim(command.explanation, out);
  }
  for (const FieldList& listing : command.listings) {
    writeVerbatim(fieldsText(listing), out);
  }
}

/// What can stand for a value or a word of this name.
std::string_view bashFiller(std::string_view name) {
  return name == "FILE" || name == "WORKSPACE" || name == "FOLDER" ? "-f" : "";
}

/// "transactions|holdings|gains" as the words that it names; none for the name of a word.
std::string wordChoices(std::string_view word) {
  std::string choices(word);
  if (!choices.contains('|')) {
    return "";
  }
  std::ranges::replace(choices, '|', ' ');
  return choices;
}

/// The values that `option` may have; none where anything may stand there.
std::string optionChoices(const Option& option) {
  return option.choices.empty() ? wordChoices(option.value) : std::string(option.choices);
}

std::string commandNames() {
  std::string names;
  for (const Command& command : commands()) {
    names += (names.empty() ? "" : " ") + std::string(command.name);
  }
  return names;
}

std::string optionNames(const Command& command) {
  std::string names = "--help --verbose";
  for (const Option& option : command.options) {
    names += " " + std::string(option.name);
  }
  return names;
}

/// The part of the script for `command`: what may stand behind an option, else its words.
void writeBashCase(const Command& command, std::ostream& out) {
  out << "    " << command.name << ")\n      case $previous in\n";
  for (const Option& option : command.options) {
    if (option.value.empty()) {
      continue;
    }
    out << "        " << option.name << ") COMPREPLY=($(compgen ";
    const std::string choices = optionChoices(option);
    const std::string_view filler = bashFiller(option.value);
    if (choices.empty() && !filler.empty()) {
      out << filler;
    } else {
      out << "-W '" << choices << "'";
    }
    out << " -- \"$current\")); return ;;\n";
  }
  out << "      esac\n      options='" << optionNames(command) << "'\n";
  std::string words;
  bool takesFile = false;
  for (const std::string_view word : command.words) {
    words += wordChoices(word);
    takesFile = takesFile || !bashFiller(word).empty();
  }
  out << "      words='" << words << "'\n      files=" << (takesFile ? "-f" : "") << "\n      ;;\n";
}

void writeBashCompletions(std::ostream& out) {
  out << "# Completes corvane-cli in bash. Made by corvane-cli --completions bash.\n"
         "_corvane_cli() {\n"
         "  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
         "  local options words files\n"
         "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
         "    COMPREPLY=($(compgen -W '"
      << commandNames()
      << " help --help --version --man --completions' -- \"$current\"))\n"
         "    return\n"
         "  fi\n"
         "  case ${COMP_WORDS[1]} in\n"
         "    help) words='"
      << commandNames()
      << "' ;;\n"
         "    --completions) words='bash zsh' ;;\n";
  for (const Command& command : commands()) {
    writeBashCase(command, out);
  }
  out << "    *) return ;;\n"
         "  esac\n"
         "  case $current in\n"
         "    -*) COMPREPLY=($(compgen -W \"$options\" -- \"$current\")) ;;\n"
         "    *) COMPREPLY=($(compgen $files -W \"$words\" -- \"$current\")) ;;\n"
         "  esac\n"
         "}\n"
         "complete -o filenames -o bashdefault -F _corvane_cli corvane-cli\n";
}

/// Text in single quotes, in which _arguments gives brackets and colons no meaning.
std::string zshText(std::string_view text) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '\'') {
      escaped += "'\\''";
    } else if (letter == ':' || letter == '[' || letter == ']' || letter == '\\') {
      escaped += std::string("\\") + letter;
    } else {
      escaped += letter;
    }
  }
  return escaped;
}

/// What _arguments shows and offers for a value or a word of this name.
std::string zshValue(std::string_view name, std::string_view choices) {
  std::string value = ":" + zshText(name) + ":";
  if (!choices.empty()) {
    value += "(" + std::string(choices) + ")";
  } else if (name == "FOLDER") {
    value += "_directories";
  } else if (!bashFiller(name).empty()) {
    value += "_files";
  }
  return value;
}

void writeZshCase(const Command& command, std::ostream& out) {
  out << "    " << command.name << ")\n      _arguments '--help[tells how it is used]'"
      << " '--verbose[writes what the program does]'";
  for (const Option& option : command.options) {
    out << " \\\n        '" << (option.mayRepeat ? "*" : "") << option.name << "["
        << zshText(option.help) << "]"
        << (option.value.empty() ? "" : zshValue(option.value, optionChoices(option))) << "'";
  }
  std::size_t place = 1;
  for (const std::string_view word : command.words) {
    out << " \\\n        '" << place++ << zshValue(word, wordChoices(word)) << "'";
  }
  out << "\n      ;;\n";
}

void writeZshCompletions(std::ostream& out) {
  out << "#compdef corvane-cli\n"
         "# Completes corvane-cli in zsh. Made by corvane-cli --completions zsh.\n"
         "_corvane_cli() {\n"
         "  local -a commands=(\n";
  for (const Command& command : commands()) {
    out << "    '" << command.name << ':' << zshText(command.summary) << "'\n";
  }
  out << "    'help:Tells how a command is used.'\n"
         "    '--help:Tells how the program is used.'\n"
         "    '--version:Tells its version.'\n"
         "    '--man:Writes its manual page.'\n"
         "    '--completions:Writes what completes its command line.'\n"
         "  )\n"
         "  if (( CURRENT == 2 )); then\n"
         "    _describe command commands\n"
         "    return\n"
         "  fi\n"
         "  local command=$words[2]\n"
         "  shift words\n"
         "  (( CURRENT-- ))\n"
         "  case $command in\n"
         "    help) _describe command commands ;;\n"
         "    --completions) _values shell bash zsh ;;\n";
  for (const Command& command : commands()) {
    writeZshCase(command, out);
  }
  out << "  esac\n"
         "}\n"
         "_corvane_cli \"$@\"\n";
}

}  // namespace

void writeManualPage(std::ostream& out) {
  const auto info = InfoDictionary::fromFile(resourcePath(InfoDictionary::fileName));
  out << ".TH CORVANE\\-CLI 1 \"\" \"Corvane " << roffText(info.shortVersion())
      << "\" \"User Commands\"\n"
         ".SH NAME\ncorvane\\-cli \\- keep investment portfolios from the console\n"
         ".SH SYNOPSIS\n.B corvane\\-cli\nCOMMAND …\n"
         ".SH DESCRIPTION\n"
      << roffText(introduction()) << ".SH OPTIONS\n"
      << ".TP\n.B \\-\\-help\ntells how the program, or behind a command how that is used\n"
         ".TP\n.B \\-\\-verbose\nwrites what the program does to the standard error\n"
         ".TP\n.B \\-\\-version\ntells the version\n"
         ".TP\n.B \\-\\-man\nwrites this page\n"
         ".TP\n.B \\-\\-completions bash|zsh\n"
         "writes what completes the command line in that shell\n"
         ".SH COMMANDS\n";
  for (const Command& command : commands()) {
    writeManual(command, out);
  }
  out << ".SH EXIT STATUS\n";
  for (const ExitCodeMeaning& code : exitCodeMeanings()) {
    out << ".TP\n.B " << code.code << '\n' << roffText(code.meaning) << '\n';
  }
  out << ".SH FILES\n"
         ".TP\n.I ~/.config/corvane/settings.json\nthe settings, which the desktop program has "
         "too\n"
         ".TP\n.I ~/.config/corvane/statements\nyour own layouts of statements\n"
         ".TP\n.I ~/.cache/corvane\nfetched prices; it can be thrown away\n"
         ".SH EXAMPLES\n";
  writeVerbatim(firstSession(), out);
}

bool writeCompletions(std::string_view shell, std::ostream& out) {
  if (shell == "bash") {
    writeBashCompletions(out);
  } else if (shell == "zsh") {
    writeZshCompletions(out);
  } else {
    return false;
  }
  return true;
}

}  // namespace corvane::cli
