#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/NotificationCenter.h"
#include "platform/foundation/UndoManager.h"
#include "platform/foundation/Value.h"

/// A document of one number and a log; every edit registers its inverse.
class Counter : public ns::Object {
 public:
  explicit Counter(std::shared_ptr<ns::UndoManager> manager) : manager_(std::move(manager)) {}

  void set(int value) {
    manager_->registerUndoWithTarget(this, &Counter::set, value_, "set");
    value_ = value;
    log_.push_back("set " + std::to_string(value));
  }
  void note(const std::string& text, int number) {
    log_.push_back(text + " " + std::to_string(number));
  }
  void keep(const std::shared_ptr<ns::Object>&) { log_.push_back("keep"); }
  void store(const ns::Value& value) { log_.push_back("store " + value.string().utf8()); }
  void run(const std::function<void()>& function) { function(); }

  int value() const { return value_; }
  const std::vector<std::string>& log() const { return log_; }

 private:
  std::shared_ptr<ns::UndoManager> manager_;
  int value_ = 0;
  std::vector<std::string> log_;
};

class UndoTest : public testing::Test {
 protected:
  using State = ns::UndoManager::State;

  void note(const char* text, int number) {
    manager->prepareWithInvocationTarget(counter, text).call(&Counter::note, text, number);
  }
  /// A group of its own.
  void noteGroup(const char* text) {
    note(text, 0);
    manager->endEvent();
  }
  /// Registers a call of `function` in a group of its own.
  void atUndo(std::function<void()> function) {
    manager->registerUndoWithTarget(counter, &Counter::run, std::move(function), "run");
  }
  template <class Operation>
  static std::string reasonOf(Operation operation) {
    try {
      operation();
    } catch (const ns::UndoException& exception) {
      return exception.what();
    }
    return "nothing was raised";
  }

  std::shared_ptr<ns::UndoManager> manager = std::make_shared<ns::UndoManager>();
  std::shared_ptr<Counter> counter = std::make_shared<Counter>(manager);
};

/// Sees every notification of the manager, and reacts to one if wanted.
class UndoObservingTest : public UndoTest {
 protected:
  UndoObservingTest() {
    center.addObserver(this, "", manager.get(), [&](const auto& notification) {
      EXPECT_EQ(notification.object, manager.get());
      std::string name(notification.name.substr(std::string("NSUndoManager").size()));
      name.resize(name.size() - std::string("Notification").size());
      seen.push_back(name);
      if (name == observed) reaction();
    });
  }
  std::vector<std::string> takeSeen() { return std::exchange(seen, {}); }

  ns::NotificationCenter center;
  ns::NotificationCenter::ScopedDefault useCenter{center};
  std::vector<std::string> seen;
  std::string observed;
  std::function<void()> reaction;
};
