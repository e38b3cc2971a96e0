#pragma once

#include <functional>
#include <vector>

#include "ports/SystemPort.h"

namespace veloria::tests {

class FakeSystem final : public SystemPort {
 public:
  SystemFacts facts() override { return now; }
  void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
  Result<Done> open(SystemPane pane) override {
    opened.push_back(pane);
    return Failure{"No settings program."};
  }

  SystemFacts now;
  std::function<void()> changed;
  std::vector<SystemPane> opened;
};

class FakeLogin final : public LoginItemPort {
 public:
  bool isRegistered() override { return registered; }
  Result<Done> add() override { return change(true); }
  Result<Done> remove() override { return change(false); }

  bool registered = false;
  bool works = true;

 private:
  Result<Done> change(bool value) {
    if (!works) return Failure{"/autostart: No space left on device"};
    registered = value;
    return Done{};
  }
};

}  // namespace veloria::tests
