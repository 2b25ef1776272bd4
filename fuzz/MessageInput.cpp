#include "fuzz/MessageInput.h"

#include <exception>
#include <fstream>
#include <sstream>
#include <vector>

#include "compiler/DefinitionCompiler.h"
#include "elements/MessageElement.h"
#include "foundation/MessageFactory.h"
#include "parsing/MessageReader.h"

namespace vantrelia::fuzz {

namespace {

MessageFactory& factory() {
  static MessageFactory* made = [] {
    std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml");
    std::stringstream source;
    source << file.rdbuf();
    const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(source.str());
    const std::string path = "/tmp/vantrelia_fuzz_messages.pcf";
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                                static_cast<std::streamsize>(bytes.size()));
    auto* loaded = new MessageFactory();
    loaded->LoadDefinition(path);
    return loaded;
  }();
  return *made;
}

const std::u16string kPreserve = std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText";

}  // namespace

std::string parseAndWrite(const uint8_t* data, size_t size) {
  std::u16string text(data, data + size);
  try {
    for (const bool preserve : {false, true}) {
      factory().SetOption(kPreserve, Any::any(preserve));
      MessageReader reader(factory().getWarehouse(), text);
      MessageReader::Item item;
      int64_t covered = 0;
      while (reader.next(item)) {
        if (item.offset != covered || item.length <= 0) return "the reader lost or repeated text";
        covered += item.length;
        if (!item.message) continue;
        const std::u16string written = item.message->getEncodedValue();
        if (preserve && written != text.substr(static_cast<size_t>(item.offset), static_cast<size_t>(item.length))) {
          return "an untouched message didn't come back as it was read";
        }
      }
      if (covered != static_cast<int64_t>(text.size())) return "the reader stopped before the end of the text";
    }
  } catch (const std::exception& failure) {
    return std::string("exception: ") + failure.what();
  }
  return "";
}

}  // namespace vantrelia::fuzz
