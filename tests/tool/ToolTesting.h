#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "document/OLDataManager.h"
#include "platform/foundation/Dictionary.h"
#include "platform/foundation/File.h"
#include "platform/foundation/Log.h"

namespace tavlin {

/// A test with a folder of its own for documents, and with the log caught.
class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = (std::filesystem::temp_directory_path() / "tool-XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder_ = name;
    previous_ = ns::setLogHandler([this](std::string_view line) { log_.emplace_back(line); });
  }
  void TearDown() override {
    ns::setLogHandler(previous_);
    std::filesystem::remove_all(folder_);
  }

  /// Saves a document with these properties (none: without any) and answers its path.
  std::string documentWith(const ns::Value& properties) {
    const auto document = OLDataManager::create();
    document->setObjectValueForKey(properties, "documentProperties");
    const std::string path = folder_ + "/document.tavlin";
    ns::writeFileAtomically(path, *document->dataRepresentation());
    return path;
  }

  static ns::Value propertiesOf(const std::string& path) {
    const auto document = OLDataManager::create();
    EXPECT_TRUE(document->loadDataRepresentationOfType(ns::readFile(path)));
    return document->objectValueForKey("documentProperties");
  }

  std::string folder_;
  std::vector<std::string> log_;

 private:
  ns::LogHandler previous_;
};

}  // namespace tavlin
