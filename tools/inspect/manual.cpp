#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "tools/inspect/inspect.h"

namespace zentrel::vistabase::ardelivery::inspect {
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

}  // namespace

void writeManual(const CLI::App& app, std::ostream& out) {
  out << ".TH MODELCACHE-INSPECT 1 \"\" \"libmodelcache " MODELCACHE_VERSION "\"\n.SH NAME\n"
      << escaped(app.get_name() + " - " + app.get_description()) << "\n.SH SYNOPSIS\n.B "
      << escaped(app.get_name()) << "\n[\\fIOPTION\\fR]... \\fIROOT\\fR...\n.SH OPTIONS\n";
  for (const CLI::Option* const option : app.get_options([](const CLI::Option* each) {
         return !each->get_group().empty();  // Others are hidden.
       })) {
    out << ".TP\n\\fB" << escaped(option->get_name()) << "\\fR \\fI"
        << escaped(option->get_type_name()) << "\\fR\n"
        << escaped(option->get_description()) << '\n';
  }
  out << ".SH NOTES\n.nf\n" << escaped(app.get_footer()) << "\n.fi\n";
}

void writeCompletion(const CLI::App& app, std::ostream& out) {
  std::string names;
  std::string values;
  for (const CLI::Option* const option : app.get_options()) {
    if (option->get_lnames().empty() || option->get_group().empty()) {
      continue;
    }
    const std::string name = "--" + option->get_lnames().front();
    names += name + ' ';
    if (std::string words = option->get_type_name(); !words.empty()) {
      words = words.find('|') == std::string::npos ? "" : words;
      std::replace(words.begin(), words.end(), '|', ' ');
      values.append("    ").append(name).append(") COMPREPLY=($(compgen -W '").append(words);
      values.append("' -- \"$word\")); return ;;\n");
    }
  }
  out << R"(_modelcache_inspect() {
  local word=${COMP_WORDS[COMP_CWORD]}
  case ${COMP_WORDS[COMP_CWORD - 1]} in
)" << values
      << R"(  esac
  if [[ $word == -* ]]; then
    COMPREPLY=($(compgen -W ')"
      << names << R"(' -- "$word"))
  else
    mapfile -t COMPREPLY < <(compgen -d -- "$word")
  fi
}
complete -o filenames -F _modelcache_inspect )"
      << app.get_name() << '\n';
}

}  // namespace zentrel::vistabase::ardelivery::inspect
