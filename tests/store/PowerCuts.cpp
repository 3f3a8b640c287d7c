// The unsynced changes of a SimulatedDisk, and what a power cut may leave of them.

#include <algorithm>

#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Node = SimulatedDisk::Node;
using NodePtr = SimulatedDisk::NodePtr;
using Names = SimulatedDisk::Names;
using Change = SimulatedDisk::Change;

/// What a power cut does to a change. Only writes can be torn.
enum Choice { kDone, kLost, kTorn };

/// Applies a change of names to the states of its directories that `namesOf` returns.
template <class NamesOf>
void apply(const Change& change, const NamesOf& namesOf) {
  if (change.from) {
    Names& names = namesOf(*change.from);
    const auto found = names.find(change.fromName);
    if (found != names.end() && found->second == change.node) {
      names.erase(found);
    }
  }
  if (change.to) {
    namesOf(*change.to)[change.toName] = change.node;
  }
}

/// Adds what is in a directory, with the bytes given for a file or else its own.
template <class NamesOf>
void add(Image& image, const std::string& path, const Node& directory, const NamesOf& namesOf,
         const std::map<const Node*, std::string>& bytes) {
  for (const auto& [name, node] : namesOf(directory)) {
    if (node->isDirectory) {
      image[path + name + '/'];
      add(image, path + name + '/', *node, namesOf, bytes);
    } else {
      image[path + name] = bytes.count(node.get()) != 0 ? bytes.at(node.get()) : node->bytes;
    }
  }
}

std::string torn(const std::string& bytes, const std::string& synced, bool isCut) {
  const std::size_t kept = bytes.compare(0, synced.size(), synced) == 0 ? synced.size() : 0;
  std::string left = bytes.substr(0, kept + (bytes.size() - kept) / 2);
  left.resize(isCut ? left.size() : bytes.size());
  return left;
}

}  // namespace

void SimulatedDisk::changeNames(const Change& change) {
  apply(change, [](Node& directory) -> Names& { return directory.names; });
  change.node->changed = ++clock_;
  pending_.push_back(change);
}

void SimulatedDisk::noteWrite(const NodePtr& node) {
  node->modified = node->changed = ++clock_;
  const auto isKnown = [&node](const Change& each) { return each.isWrite() && each.node == node; };
  if (std::none_of(pending_.begin(), pending_.end(), isKnown)) {
    pending_.push_back({node});
  }
}

void SimulatedDisk::sync(const NodePtr& node) {
  node->syncedBytes = node->bytes;
  const auto isSynced = [&node](const Change& each) {
    const bool isIt = (each.isWrite() ? each.node : each.to ? each.to : each.from) == node;
    isIt ? apply(each, [](Node& directory) -> Names& { return directory.syncedNames; }) : void();
    return isIt;
  };
  pending_.erase(std::remove_if(pending_.begin(), pending_.end(), isSynced), pending_.end());
}

Image SimulatedDisk::imageAfter(const std::vector<int>& choices) const {
  std::map<const Node*, Names> names;
  std::map<const Node*, std::string> bytes;
  const auto namesOf = [&names](const Node& node) -> Names& {
    return names.try_emplace(&node, node.syncedNames).first->second;
  };
  for (std::size_t i = 0; i < pending_.size(); ++i) {
    const Node& node = *pending_[i].node;
    if (!pending_[i].isWrite()) {
      choices[i] == kDone ? apply(pending_[i], namesOf) : void();
    } else if (choices[i] != kDone) {
      bytes[&node] =
          choices[i] == kLost ? node.syncedBytes : torn(node.bytes, node.syncedBytes, i % 2 == 0);
    }
  }
  Image image;
  add(image, "", *root_, namesOf, bytes);
  return image;
}

Image SimulatedDisk::now() const {
  Image image;
  add(image, "", *root_, [](const Node& directory) { return directory.names; }, {});
  return image;
}

std::uint64_t SimulatedDisk::forEachPowerCut(std::size_t mostChanges,
                                             const std::function<void(const Image&)>& take) const {
  const std::size_t count = pending_.size();
  const auto last = [this](std::size_t i) { return pending_[i].isWrite() ? kTorn : kLost; };
  if (count <= mostChanges) {
    std::vector<int> choices(count);
    const std::function<void(std::size_t)> chooseFrom = [&](std::size_t i) {
      for (choices[i] = kDone; choices[i] <= last(i); ++choices[i]) {
        i + 1 < count ? chooseFrom(i + 1) : take(imageAfter(choices));
      }
    };
    count == 0 ? take(imageAfter(choices)) : chooseFrom(0);
    return 0;
  }
  std::uint64_t all = 1;
  for (std::size_t i = 0; i < count; ++i) {
    all *= last(i) == kTorn ? 3u : 2u;
    std::vector<int> beginning(count, kLost), missing(count, kDone), alone(count, kLost);
    std::fill_n(beginning.begin(), i + 1, kDone);
    missing[i] = kLost;
    alone[i] = kDone;
    for (const auto& choices : {beginning, missing, alone}) {
      take(imageAfter(choices));
    }
  }
  return all - 3 * count;
}

}  // namespace zentrel::vistabase::ardelivery
