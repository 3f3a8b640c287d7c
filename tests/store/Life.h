#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <new>
#include <string>
#include <unordered_set>

#include "tests/store/Samples.h"
#include "tests/store/SimulatedDisk.h"

namespace zentrel::vistabase::ardelivery {

/// What strikes a life: one call of the disk fails, or, with Death, all from that one on.
enum class Fault { None, Eio, Enospc, Edquot, Memory, Death };

/// The states that power cuts left. Each is checked once for each expectation.
struct CheckedStates {
  std::unordered_set<std::string> seen = {};
  std::uint64_t leftOut = 0;

  ~CheckedStates() {
    std::cout << seen.size() << " states, " << leftOut << " combinations left out\n";
  }
};

/// The life of a store on a simulated disk: whatever a power cut may leave at any of its steps is
/// checked, and what becomes of it when a call fails.
class Life {
 public:
  Life(const Image& image, Fault fault, int call, CheckedStates& states)
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
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;
  virtual ~Life() = default;

  virtual void live() = 0;
  bool hasStruck() const { return left_ <= 0; }

 protected:
  /// What the check depends on, in words.
  virtual std::string expectation() const = 0;
  /// That a store of the disk that a power cut left keeps the promises that were made.
  virtual void check(SimulatedDisk& disk) const = 0;
  virtual void forgetWhatIsUnreadable() {}

  /// Takes a step. False if it was struck.
  template <class Step>
  static bool survives(const Step& step) {
    try {
      return step(), true;
    } catch (const StoreError&) {
    } catch (const std::logic_error&) {  // Of wrong use or arguments.
    } catch (const std::bad_alloc&) {
    }
    return false;
  }

  void cutPower() {
    if (fault_ != Fault::None && !hasStruck()) {
      return;  // The life without a fault has all that comes before it.
    }
    const std::string expected = expectation();
    // Of many changes, every subset takes too long once for each fault.
    states_.leftOut +=
        disk_.forEachPowerCut(fault_ == Fault::None ? 8 : 4, [&](const Image& image) {
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
  const Fault fault_;

 private:
  void strike(const std::string& name, bool isChange) {
    if (fault_ == Fault::None || --left_ > 0 || (left_ < 0 && fault_ != Fault::Death)) {
      return;
    }
    if (fault_ == Fault::Memory || fault_ == Fault::Death) {
      throw std::bad_alloc();
    }
    if (!isChange) {
      forgetWhatIsUnreadable();
    }
    const int error = fault_ == Fault::Eio ? EIO : fault_ == Fault::Enospc ? ENOSPC : EDQUOT;
    throw StoreError::ofSystem("simulate", name, error, true);
  }

  int left_;
  CheckedStates& states_;
};

class FaultyLife : public testing::TestWithParam<Fault> {
 protected:
  /// Lives again and again, with the fault in each call of the disk.
  template <class Kind>
  void liveWithEachFault(const Image& image) {
    const samples::SoftErrors softErrors;
    CheckedStates states;
    bool hasStruck = true;
    for (int call = 1; hasStruck && !HasFailure(); ++call) {
      SCOPED_TRACE("call " + std::to_string(call));
      Kind life(image, GetParam(), call, states);
      life.live();
      hasStruck = life.hasStruck();
    }
  }
};

}  // namespace zentrel::vistabase::ardelivery
