#include "fuzz/MessageInput.h"

#include <exception>
#include <fstream>
#include <sstream>
#include <vector>

#include "compiler/DefinitionCompiler.h"
#include "elements/MessageElement.h"
#include "elements/MessageImpl.h"
#include "elements/SegmentElement.h"
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
    auto* loaded = new MessageFactory();
    loaded->LoadDefinition(bytes.data(), bytes.size());
    return loaded;
  }();
  return *made;
}

const std::u16string kPreserve = std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText";
const std::u16string kCutWhenRead = std::u16string(OptionUriPrefix) + u"/edi/cutFieldsWhenRead";

// The parse findings of a message and of every message embedded in it: which of them holds a
// finding may differ with when the fields were cut, the findings may not.
int findingsBelow(MessageElement& element) {
  int count = 0;
  if (auto* message = dynamic_cast<MessageImpl*>(&element)) count += message->getParseFindings().count();
  if (element.getNodeType() == qxPrimitive || dynamic_cast<SegmentElement*>(&element)) return count;
  // Asking by wildcard makes nothing that isn't there.
  const bool byIndex = element.getNodeType() == qxRepeating || element.getNodeType() == qxMessageSet;
  const ElementCollection children = element.getElementCollection(byIndex ? "[*]" : "*");
  for (int i = 0; i < children.getCount(); ++i) {
    if (MessageElement* child = children.getItem(i); child && child->isPresent()) count += findingsBelow(*child);
  }
  return count;
}

}  // namespace

std::string parseAndWrite(const uint8_t* data, size_t size) {
  std::u16string text(data, data + size);
  struct Pass {
    bool preserve;
    bool cutWhenRead;
  };
  try {
    std::vector<std::u16string> first;
    for (const Pass pass : {Pass{false, false}, Pass{false, true}, Pass{true, false}}) {
      factory().SetOption(kPreserve, Any::any(pass.preserve));
      factory().SetOption(kCutWhenRead, Any::any(pass.cutWhenRead));
      MessageReader reader(factory().getWarehouse(), text);
      MessageReader::Item item;
      int64_t covered = 0;
      // What the pass gives of each item: whether it is a message, its length, the written text
      // and the number of parse findings.
      std::vector<std::u16string> seen;
      while (reader.next(item)) {
        if (item.offset != covered || item.length <= 0) return "the reader lost or repeated text";
        covered += item.length;
        std::u16string outcome = std::u16string(1, static_cast<char16_t>(item.message ? 1 : 0)) +
                                 std::u16string(1, static_cast<char16_t>(item.length & 0xFFFF));
        if (item.message) {
          const std::u16string written = item.message->getEncodedValue();
          if (pass.preserve &&
              written != text.substr(static_cast<size_t>(item.offset), static_cast<size_t>(item.length))) {
            return "an untouched message didn't come back as it was read";
          }
          outcome += written + u'#' + static_cast<char16_t>(findingsBelow(*item.message));
        }
        seen.push_back(std::move(outcome));
      }
      if (covered != static_cast<int64_t>(text.size())) return "the reader stopped before the end of the text";
      if (pass.preserve) continue;
      // Lazy reading (fields cut when first needed, the next message's header known by its tag)
      // and reading everything in full agree.
      if (pass.cutWhenRead && seen != first) return "lazy reading and reading in full disagree";
      first = std::move(seen);
    }
  } catch (const std::exception& failure) {
    return std::string("exception: ") + failure.what();
  }
  return "";
}

}  // namespace vantrelia::fuzz
