// What lies on a SimulatedDisk, now and after a power cut.

#include <algorithm>

#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {
namespace {

using Node = SimulatedDisk::Node;
using Names = SimulatedDisk::Names;

/// Of a change of names, whether it is done, and of written bytes, what is left of them.
enum Choice { kDone, kLost, kTorn };

template <class NamesOf, class BytesOf>
void add(Image& image, const std::string& path, const Node& directory, const NamesOf& namesOf,
         const BytesOf& bytesOf) {
  for (const auto& [name, inside] : namesOf(directory)) {
    if (inside->isDirectory) {
      image[path + name + '/'];
      add(image, path + name + '/', *inside, namesOf, bytesOf);
    } else {
      image[path + name] = bytesOf(*inside);
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

Image SimulatedDisk::now() const {
  Image image;
  add(
      image, "", *root_, [](const Node& node) { return node.names; },
      [](const Node& node) { return node.bytes; });
  return image;
}

Image SimulatedDisk::imageAfter(const std::vector<int>& choices) const {
  std::map<const Node*, Names> names;
  std::map<const Node*, std::string> bytes;
  const auto namesOf = [&names](const Node& node) -> Names& {
    return names.emplace(&node, node.syncedNames).first->second;
  };
  for (std::size_t i = 0; i < pending_.size(); ++i) {
    const auto& [node, from, fromName, to, toName] = pending_[i];
    if (pending_[i].isWrite()) {
      bytes[node.get()] = choices[i] == kDone   ? node->bytes
                          : choices[i] == kLost ? node->syncedBytes
                                                : torn(node->bytes, node->syncedBytes, i % 2 == 0);
    } else if (choices[i] == kDone) {
      if (from) {
        const auto found = namesOf(*from).find(fromName);
        if (found != namesOf(*from).end() && found->second == node) {
          namesOf(*from).erase(found);
        }
      }
      if (to) {
        namesOf(*to)[toName] = node;
      }
    }
  }
  Image image;
  add(image, "", *root_, namesOf, [&bytes](const Node& node) {
    const auto found = bytes.find(&node);
    return found == bytes.end() ? node.bytes : found->second;
  });
  return image;
}

std::uint64_t SimulatedDisk::forEachPowerCut(std::size_t mostChanges,
                                             const std::function<void(const Image&)>& take) const {
  const std::size_t count = pending_.size();
  const auto last = [this](std::size_t i) { return pending_[i].isWrite() ? kTorn : kLost; };
  if (count <= mostChanges) {
    std::vector<int> choices(count, kDone);
    for (std::size_t i = 0;;) {
      take(imageAfter(choices));
      for (i = 0; i < count && choices[i] == last(i); ++i) {
        choices[i] = kDone;
      }
      if (i == count) {
        return 0;
      }
      ++choices[i];
    }
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
