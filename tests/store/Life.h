#pragma once

#include <cerrno>
#include <iostream>
#include <new>
#include <string>
#include <unordered_set>

#include "tests/store/Samples.h"

namespace zentrel::vistabase::ardelivery {

/// What happens to a call of the disk: it fails with an errno or for lack of memory; or the process
/// ends there, so that all later calls fail too.
enum Fault { kNone = 0, kOutOfMemory = -1, kDeath = -2 };

/// The disk states that power cuts left. Each is checked once for each expectation.
struct CheckedStates {
  std::unordered_set<std::string> seen = {};
  std::uint64_t leftOut = 0;
};

/// The life of a store on a simulated disk. Checks every state that a power cut may leave before
/// any of its changes, and how the store behaves after a call of the disk has failed.
class Life {
 public:
  Life(const Image& image, int fault, int call, CheckedStates& states)
      : disk_(image), fault_(fault), left_(call), states_(states) {
    disk_.hook = [this](std::string_view each, const std::string& name) {
      const bool isChange =
          each != "read" && each != "status" && each != "list" && each.substr(0, 4) != "open";
      if (isChange) {
        cutPower();
      }
      strike(name, isChange);
    };
  }
  virtual ~Life() = default;

  virtual void live() = 0;
  bool hasStruck() const { return left_ <= 0; }

 protected:
  /// All that `check` depends on, as text.
  virtual std::string expectation() const = 0;
  /// Checks that a store opened on what a power cut left keeps every promise made before it.
  virtual void check(SimulatedDisk& disk) const = 0;
  /// Called when a read fails: the store may fetch again what it cannot read.
  virtual void forgetWhatIsUnreadable() {}

  /// Takes a step. Returns false if it failed.
  template <class Step>
  static bool survives(const Step& step) {
    try {
      return step(), true;
    } catch (const StoreError&) {
    } catch (const std::logic_error&) {  // An earlier step has failed.
    } catch (const std::bad_alloc&) {
    }
    return false;
  }

  void cutPower() {
    if (fault_ != kNone && !hasStruck()) {
      return;  // The life without a fault has checked all states up to here.
    }
    const std::string expected = expectation();
    // With more changes, trying every subset for every fault takes too long.
    states_.leftOut += disk_.forEachPowerCut(fault_ == kNone ? 8 : 4, [&](const Image& image) {
      std::string text;
      for (const auto& [path, bytes] : image) {
        text += path + '\n' + bytes + '\n';
      }
      if (!testing::Test::HasFailure() && states_.seen.insert(text + expected).second) {
        SCOPED_TRACE(text);
        SimulatedDisk disk(image);
        check(disk);
      }
    });
  }

  SimulatedDisk disk_;
  const int fault_;

 private:
  void strike(const std::string& name, bool isChange) {
    if (fault_ == kNone || --left_ > 0 || (left_ < 0 && fault_ != kDeath)) {
      return;
    }
    if (fault_ < 0) {
      throw std::bad_alloc();
    }
    if (!isChange) {
      forgetWhatIsUnreadable();
    }
    throw StoreError::ofSystem("simulate", name, fault_, true);
  }

  int left_;
  CheckedStates& states_;
};

/// Repeats the life with each fault in each call of the disk.
template <class Kind>
void liveWithEachFault(const Image& image) {
  const samples::SoftErrors softErrors;
  for (const int fault : {int{kNone}, EIO, ENOSPC, EDQUOT, int{kOutOfMemory}, int{kDeath}}) {
    CheckedStates states;
    bool hasStruck = true;
    for (int call = 1; hasStruck && !testing::Test::HasFailure(); ++call) {
      SCOPED_TRACE("fault " + std::to_string(fault) + " in call " + std::to_string(call));
      Kind life(image, fault, call, states);
      life.live();
      hasStruck = life.hasStruck();
    }
    std::cout << states.seen.size() << " states, " << states.leftOut << " combinations left out\n";
  }
}

}  // namespace zentrel::vistabase::ardelivery
