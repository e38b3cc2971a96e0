#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "ports/SystemPort.h"
#include "ports/Timer.h"
#include "system/LoginItem.h"

namespace veloria {

class FakeSystem final : public SystemPort {
 public:
  SystemFacts facts() override {
    ++asked;
    return now;
  }
  void setChangeHandler(std::function<void()> handler) override { changed = std::move(handler); }
  Result<Done> open(SystemPane pane) override {
    opened.push_back(pane);
    if (opens) return Done{};
    return Failure{"No settings program."};
  }

  SystemFacts now;
  int asked = 0;
  bool opens = false;
  std::function<void()> changed;
  std::vector<SystemPane> opened;
};

/// Has one timer at most, which fires when it is told to.
class OneTimer final : public TimerFactory {
 public:
  class Handle final : public Timer {
   public:
    explicit Handle(OneTimer& owner) : owner_(owner) {}
    ~Handle() override { owner_.action = nullptr; }

   private:
    OneTimer& owner_;
  };
  std::unique_ptr<Timer> repeating(double, double toleranceSeconds, std::function<void()> newAction) override {
    EXPECT_FALSE(action) << "a second timer";
    tolerance = toleranceSeconds;
    action = std::move(newAction);
    return std::make_unique<Handle>(*this);
  }

  std::function<void()> action;
  double tolerance = 0;
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

}  // namespace veloria
