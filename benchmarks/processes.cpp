// processes ROUNDS COMMAND...: runs each command (words separated by spaces) in turn, ROUNDS times,
// and prints the median of the milliseconds from its start to its end, a line each.

#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// Milliseconds; negative when the command failed.
double run(const std::string& command) {
  std::istringstream text(command);
  std::vector<std::string> words;
  for (std::string word; text >> word;) {
    words.push_back(word);
  }
  std::vector<char*> arguments;
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1 /* O_WRONLY */, 0);
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  int status = -1;
  if (::posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) == 0) {
    ::waitpid(child, &status, 0);
  }
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  ::posix_spawn_file_actions_destroy(&actions);
  return status == 0 ? time.count() : -1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  const int rounds = std::stoi(argv[1]);
  std::vector<std::vector<double>> times(static_cast<std::size_t>(argc - 2));
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < times.size(); ++i) {
      times[i].push_back(run(argv[i + 2]));
      if (times[i].back() < 0) {
        std::cerr << "failed: " << argv[i + 2] << '\n';
        return 1;
      }
    }
  }
  for (auto& row : times) {
    std::sort(row.begin(), row.end());
    std::cout << row[row.size() / 2] << '\n';
  }
}
