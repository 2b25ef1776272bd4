#pragma once
// What the compiler tests share: a whole definition compiled and loaded into a factory, the text
// of the CompileError a step raises, and the checks made on that text.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"

namespace vantrelia::testing {

// Compiles the source for the version (the source's own or the newest when none is given), loads
// the bytes into the factory as a host does, and returns its warehouse.
const MessageWarehouseDefn& compileAndLoad(MessageFactory& factory, const std::string& source, std::optional<int> version = {});

// The text of the CompileError that `step` raises, or "" when it raises none.
std::string compileError(const std::function<void()>& step);

// The text of the CompileError that compiling the whole source raises, or "" when it compiles.
std::string definitionCompileFailure(const std::string& source, std::optional<int> version = {});

// The error of a key that the file's version can't carry.
std::string versionGate(int line, const std::string& key, const std::string& what, int needed, int version);

// Success when `failure` begins with `start`, or for an empty `start` when there is no failure.
::testing::AssertionResult failsWith(const std::string& failure, const std::string& start);

}  // namespace vantrelia::testing
