#include "support/DefinitionBytes.h"

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/CompositeDefn.h"
#include "foundation/InvalidFile.h"
#include "support/DefinitionSetup.h"

namespace vantrelia::testing {

void readExactly(const std::vector<uint8_t>& bytes, const std::function<void(DefinitionFile&)>& read) {
  ByteReader reader(compiler::PcfWriter().raw(bytes).i32(kSentinel).take());
  read(reader.file);
  EXPECT_EQ(reader.file.readInt(), kSentinel) << "the bytes were not read to their exact end";
}

std::string invalidFileMessage(const std::function<void()>& action) {
  try {
    action();
  } catch (const InvalidFile& e) {
    return e.message;
  }
  return "";
}

void loadComposites(MessageSetDefn& set, const std::vector<uint8_t>& bytes, size_t count, int version) {
  FieldUpdates updates;
  std::vector<std::unique_ptr<CompositeDefn>> loaded(count);
  readExactly(bytes, [&](DefinitionFile& file) {
    for (auto& composite : loaded) (composite = std::make_unique<CompositeDefn>())->load(set, file, version, updates);
  });
  DefinitionSetup::addComposites(set, std::move(loaded), updates);
  EXPECT_TRUE(updates.empty());
}

}  // namespace vantrelia::testing
