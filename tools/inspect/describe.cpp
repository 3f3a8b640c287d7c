// describe MANUAL COMPLETION: writes the manual of modelcache-inspect, and bash's completion for
// it, out of what its command line says of itself.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>
#include <string_view>

#include "tools/inspect/inspect.h"

using namespace zentrel::vistabase::ardelivery::inspect;

namespace {

/// As troff takes it for text: a hyphen that can be copied, and no request at a line's beginning.
std::string escaped(std::string_view text) {
  std::string result;
  for (const char character : text) {
    const bool begins = result.empty() || result.back() == '\n';
    result += begins && (character == '.' || character == '\'') ? "\\&" : "";
    result += character == '\\' ? "\\e" : character == '-' ? "\\-" : std::string(1, character);
  }
  return result;
}

void writeManual(const CLI::App& app, std::ostream& out) {
  out << ".TH "
      << "MODELCACHE-INSPECT"
      << " 1 \"\" \"libmodelcache " MODELCACHE_VERSION "\"\n"
      << ".SH NAME\n"
      << escaped(kProgram) << " \\- show what lies in model caches\n"
      << ".SH SYNOPSIS\n.B " << escaped(kProgram) << "\n[\\fIOPTION\\fR]... \\fIROOT\\fR...\n"
      << ".SH DESCRIPTION\n"
      << escaped(app.get_description()) << "\n.SH OPTIONS\n";
  for (const CLI::Option* const option : app.get_options()) {
    const std::string value = option->get_type_name();
    out << ".TP\n\\fB" << escaped(option->get_name()) << "\\fR"
        << (value.empty() ? "" : " \\fI" + escaped(value) + "\\fR") << '\n'
        << escaped(option->get_description()) << '\n';
  }
  for (const auto& [heading, text] : sections()) {
    out << ".SH " << heading << "\n.nf\n" << escaped(text) << "\n.fi\n";
  }
}

void writeCompletion(const CLI::App& app, std::ostream& out) {
  std::string names;
  std::string values;
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_lnames().empty()) {
      continue;
    }
    const std::string name = "--" + option->get_lnames().front();
    names += (names.empty() ? "" : " ") + name;
    if (std::string words = option->get_type_name(); !words.empty()) {
      const bool isChoice = words.find('|') != std::string::npos;
      std::replace(words.begin(), words.end(), '|', ' ');
      values += "    " + name + ") COMPREPLY=($(compgen -W '" + (isChoice ? words : "") +
                "' -- \"$word\")); return ;;\n";
    }
  }
  out << "_modelcache_inspect() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]}\n"
         "  case ${COMP_WORDS[COMP_CWORD - 1]} in\n"
      << values
      << "  esac\n"
         "  if [[ $word == -* ]]; then\n"
         "    COMPREPLY=($(compgen -W '"
      << names
      << "' -- \"$word\"))\n"
         "  else\n"
         "    mapfile -t COMPREPLY < <(compgen -d -- \"$word\")\n"
         "  fi\n"
         "}\n"
         "complete -o filenames -F _modelcache_inspect "
      << kProgram << '\n';
}

}  // namespace

int main(int count, char** arguments) {
  CLI::App app;
  Options options;
  declare(app, options);
  if (count != 3) {
    return 2;
  }
  std::ofstream manual(arguments[1]);
  writeManual(app, manual);
  std::ofstream completion(arguments[2]);
  writeCompletion(app, completion);
  return manual.flush() && completion.flush() ? 0 : 1;
}
