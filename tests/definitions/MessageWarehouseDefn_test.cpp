// Loading the outer structure of a definition file: version checks, header, type-table counts,
// user data, flags, and the failure texts a host sees.

#include <gtest/gtest.h>

#include <stdexcept>

#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"
#include "foundation/MessageFactory.h"
#include "support/DefinitionBytes.h"
#include "support/PcfLoad.h"
#include "support/TempDir.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using testing::invalidFileMessage;
using testing::loadBytes;
using testing::loadFailure;

// The smallest complete file of each era, laid out by hand: version, header from 866, the two
// type counts from 853, hasVariableFields from 854, the two user-data counts from 855, flags
// from 880, and the message set count.
PcfWriter emptyFile(int version) {
  PcfWriter w;
  w.i32(version);
  if (version >= 866) w.text8("PCFFILE");
  if (version >= 853) w.i32(0).i32(0);
  if (version >= 854) w.boolean(false);
  if (version >= 855) w.count(0).count(0);
  if (version >= 880) w.i32(0);
  w.i32(0);
  return w;
}

TEST(MessageWarehouseDefnTest, VersionAndHeaderChecks) {
  // failure: "" for a file that loads
  struct Case { const char* what; std::vector<uint8_t> bytes; std::string failure; } cases[] = {
      {"oldest version", emptyFile(512).bytes(), ""},
      {"last version without header", emptyFile(865).bytes(), ""},
      {"first version with header", emptyFile(866).bytes(), ""},
      {"newest version", emptyFile(883).bytes(), ""},
      {"one past the newest", PcfWriter().i32(884).text8("PCFFILE").bytes(), "The PCF is newer than this version of Vantrelia"},
      {"one before the oldest", PcfWriter().i32(511).i32(0).bytes(), "Invalid version number in PCF"},
      {"negative version", PcfWriter().i32(-1).bytes(), "Invalid version number in PCF"},
      // Text that isn't a PCF at all: "PCFF" read as a version is far too new.
      {"header where the version belongs", PcfWriter().text8("PCFFILE").bytes(), "The PCF is newer than this version of Vantrelia"},
      {"866 without header", PcfWriter().i32(866).i32(0).i32(0).boolean(false).count(0).count(0).i32(0).bytes(),
       "Corrupt PCF: Header is invalid"},
      {"wrong header", PcfWriter().i32(883).text8("PCFFILX").bytes(), "Corrupt PCF: Header is invalid"},
      {"header in lower case", PcfWriter().i32(883).text8("pcffile").bytes(), "Corrupt PCF: Header is invalid"},
      {"header too long", PcfWriter().i32(883).text8("PCFFILE2").bytes(), "Corrupt PCF: Header is invalid"},
      {"empty file", {}, "Unexpected end of input file"},
  };
  for (const Case& c : cases) EXPECT_EQ(loadFailure(c.bytes), c.failure) << c.what;
}

TEST(MessageWarehouseDefnTest, HeaderIsCutAtItsFirstZeroByte) {
  PcfWriter w;
  w.i32(883).text8(std::string("PCFFILE\0xyz", 11)).i32(0).i32(0).boolean(false).count(0).count(0).i32(0).i32(0);
  EXPECT_EQ(loadFailure(w.bytes()), "");
}

TEST(MessageWarehouseDefnTest, NegativeTypeCountsAreCorrupt) {
  const auto prefix = [] { return PcfWriter().i32(883).text8("PCFFILE"); };
  EXPECT_EQ(loadFailure(prefix().i32(-1).bytes()), "PCF is corrupt: Invalid number of primitive types");
  EXPECT_EQ(loadFailure(prefix().i32(0).i32(-7).bytes()), "PCF is corrupt: Invalid number of array types");
  // Before 853 there are no type tables: the same bytes are the set count and never a type count.
  EXPECT_EQ(loadFailure(PcfWriter().i32(852).i32(0).bytes()), "");
}

TEST(MessageWarehouseDefnTest, EveryTruncationFailsAsEndOfInput) {
  const auto full = compiler::DefinitionCompiler::compile(R"(
version: 883
flags: 3
hasVariableFields: true
userDataKeys: [Lonely]
userData: {Author: "Somebody", Release: "2.5"}
)");
  ASSERT_EQ(loadFailure(full), "");
  for (size_t cut = 0; cut < full.size(); ++cut) {
    const std::vector<uint8_t> prefix(full.begin(), full.begin() + static_cast<long>(cut));
    EXPECT_EQ(loadFailure(prefix), "Unexpected end of input file") << "cut after " << cut << " bytes";
  }
}

TEST(MessageWarehouseDefnTest, TruncationAtTheBufferBoundary) {
  // A user-data value long enough to carry the file past one 32768-byte buffer.
  PcfWriter w;
  w.i32(883).text8("PCFFILE").i32(0).i32(0).boolean(false).count(1).text16(u"K").count(1).count(0);
  const size_t header = w.size() + 2;  // the value's own length field follows
  const size_t units = (DefinitionFile::kBufferSize + 100 - header) / 2;
  w.text16(std::u16string(units, u'v')).i32(0).i32(0);
  ASSERT_GT(w.size(), DefinitionFile::kBufferSize);
  ASSERT_EQ(loadFailure(w.bytes()), "");

  for (size_t cut : {DefinitionFile::kBufferSize - 1, DefinitionFile::kBufferSize, DefinitionFile::kBufferSize + 1,
                     w.size() - 1}) {
    const std::vector<uint8_t> prefix(w.bytes().begin(), w.bytes().begin() + static_cast<long>(cut));
    EXPECT_EQ(loadFailure(prefix), "Unexpected end of input file") << "cut after " << cut << " bytes";
  }
}

TEST(MessageWarehouseDefnTest, AFileOfExactlyOneBufferLoads) {
  // Version 865: no header and no flags, so that the fixed part has an even length.
  PcfWriter w;
  w.i32(865).i32(0).i32(0).boolean(false).count(1).text16(u"K").count(1).count(0);
  const size_t fixed = w.size() + 2 + 4;  // value length, set count
  ASSERT_EQ((DefinitionFile::kBufferSize - fixed) % 2, 0u);
  w.text16(std::u16string((DefinitionFile::kBufferSize - fixed) / 2, u'v')).i32(0);
  ASSERT_EQ(w.size(), DefinitionFile::kBufferSize);
  MessageFactory factory;
  loadBytes(factory, w.bytes());
  std::u16string value;
  ASSERT_TRUE(factory.GetUserData(u"K", value));
  EXPECT_EQ(value.size(), (DefinitionFile::kBufferSize - fixed) / 2);
}

TEST(MessageWarehouseDefnTest, UserDataKeepsTheFirstValueOfAKey) {
  PcfWriter w = PcfWriter().i32(883).text8("PCFFILE").i32(0).i32(0).boolean(false);
  w.count(2).text16(u"A").text16(u"B");
  w.count(4).count(1).text16(u"b1").count(1).text16(u"b2").count(0).text16(u"a").count(9).text16(u"orphan");
  w.i32(0).i32(0);
  MessageFactory factory;
  loadBytes(factory, w.bytes());
  const auto& warehouse = factory.getWarehouse();
  EXPECT_EQ(warehouse.getUserData().at(1).str(), u"b1");
  EXPECT_EQ(warehouse.getUserData().at(0).str(), u"a");
  EXPECT_EQ(warehouse.getUserData().at(9).str(), u"orphan") << "a value whose index names no key is kept";
  EXPECT_EQ(warehouse.getUserDataKeyIndex(u"B"), 1);
  EXPECT_EQ(warehouse.getUserDataKeyIndex(u"b"), -1) << "keys compare exactly";
}

TEST(MessageWarehouseDefnTest, UserDataKeyWithoutValueIsNotFound) {
  PcfWriter w = PcfWriter().i32(883).text8("PCFFILE").i32(0).i32(0).boolean(false);
  w.count(2).text16(u"Known").text16(u"Bare").count(1).count(0).text16(u"v").i32(0).i32(0);
  MessageFactory factory;
  loadBytes(factory, w.bytes());
  std::u16string value = u"untouched";
  EXPECT_FALSE(factory.GetUserData(u"Bare", value));
  EXPECT_FALSE(factory.GetUserData(u"Missing", value));
  EXPECT_EQ(value, u"untouched");
  EXPECT_TRUE(factory.GetUserData(u"Known", value));
  EXPECT_EQ(value, u"v");
}

TEST(MessageWarehouseDefnTest, ZeroMessageSetsLoadsButIsNotADefinition) {
  MessageFactory factory;
  EXPECT_FALSE(factory.IsDefinitionLoaded());
  loadBytes(factory, emptyFile(883).bytes());
  EXPECT_FALSE(factory.IsDefinitionLoaded());
  EXPECT_EQ(factory.getWarehouse().getVersion(), 883);
}

TEST(MessageWarehouseDefnTest, AReloadReplacesTheDefinitionAndFlagsButKeepsSettings) {
  MessageFactory factory;
  factory.SetValidationCaching(true);
  factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/minimizeChanges", Any::any(true));

  PcfWriter first = PcfWriter().i32(883).text8("PCFFILE").i32(0).i32(0).boolean(true);
  first.count(1).text16(u"Old").count(1).count(0).text16(u"x").i32(6).i32(0);
  loadBytes(factory, first.bytes());
  EXPECT_EQ(factory.GetFlags(), 6u);
  EXPECT_TRUE(factory.getWarehouse().getHasVariableFields());

  loadBytes(factory, emptyFile(879).bytes());
  EXPECT_EQ(factory.GetFlags(), 0u) << "files before 880 carry no flags, which then become 0";
  EXPECT_FALSE(factory.getWarehouse().getHasVariableFields());
  std::u16string value;
  EXPECT_FALSE(factory.GetUserData(u"Old", value));
  EXPECT_TRUE(factory.GetValidationCaching());
  EXPECT_TRUE(Any::any_cast<bool>(factory.GetOption(std::u16string(OptionUriPrefix) + u"/edi/minimizeChanges")));
}

TEST(MessageWarehouseDefnTest, OpeningFailures) {
  testing::TempDir dir;
  MessageFactory factory;
  for (const std::string& path : {dir.path("missing.pcf"), dir.path("")})
    EXPECT_EQ(invalidFileMessage([&] { factory.LoadDefinition(path); }), "Input file was not opened") << path;
}

// A source that breaks in a way the reader doesn't know: its failure must reach the host as the
// reader's own general text, not as a foreign exception.
class FailingStream : public InputStream {
 public:
  explicit FailingStream(std::vector<uint8_t> bytes, std::function<void()> failure)
      : data(std::move(bytes)), fail(std::move(failure)) {}
  uint8_t readByte() override {
    if (next == data.size()) fail();
    return data.at(next++);
  }

 private:
  std::vector<uint8_t> data;
  std::function<void()> fail;
  size_t next = 0;
};

TEST(MessageWarehouseDefnTest, ForeignFailuresBecomeTheGeneralLoadError) {
  const std::vector<uint8_t> start = PcfWriter().i32(883).text8("PCFFILE").bytes();
  const std::function<void()> failures[] = {
      [] { throw std::runtime_error("disk on fire"); },
      [] { throw std::bad_alloc(); },
      [] { throw 42; },
  };
  const auto readFailure = [&](const std::function<void()>& failure) {
    FailingStream stream(start, failure);
    MessageWarehouseDefn warehouse;
    return invalidFileMessage([&] { warehouse.read(stream); });
  };
  for (const auto& failure : failures)
    EXPECT_EQ(readFailure(failure), "Unexpected error occurred while loading parser control file");
  // An InvalidFile from below passes unchanged.
  EXPECT_EQ(readFailure([] { throw InvalidFile("from below"); }), "from below");
}

}  // namespace
}  // namespace vantrelia
