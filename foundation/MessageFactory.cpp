#include "foundation/MessageFactory.h"

#include <bit>
#include <map>
#include <streambuf>
#include <string_view>

#include "definitions/DefinitionFile.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "elements/MessageElement.h"
#include "elements/MessageImpl.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/TextCompare.h"
#include "foundation/TextConversion.h"
#include "parsing/MessageParser.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {

namespace {

enum class OptionKind { Bool, Int, Double, WideString, Severity, NotImplemented };

struct OptionEntry {
  std::u16string_view path;
  OptionKind kind;
  bool WarehouseSettings::*boolField = nullptr;
  int32_t WarehouseSettings::*intField = nullptr;
  double WarehouseSettings::*doubleField = nullptr;
  std::u16string WarehouseSettings::*stringField = nullptr;
};

const OptionEntry kOptions[] = {
    {u"/edi/test/bool", OptionKind::Bool, &WarehouseSettings::testBool},
    {u"/edi/test/int", OptionKind::Int, nullptr, &WarehouseSettings::testInt},
    {u"/edi/test/double", OptionKind::Double, nullptr, nullptr, &WarehouseSettings::testDouble},
    {u"/edi/test/string", OptionKind::WideString, nullptr, nullptr, nullptr, &WarehouseSettings::testString},
    {u"/edi/cacheSegmentCount", OptionKind::NotImplemented},
    {u"/edi/replaceCRLFWithSegmentSeparator", OptionKind::Bool, &WarehouseSettings::replaceCRLFWithSegmentSeparator},
    {u"/edi/validationErrorSeverity?", OptionKind::Severity},
    {u"/edi/truncateFieldsToMaxLength", OptionKind::Bool, &WarehouseSettings::truncateFieldsToMaxLength},
    {u"/edi/minimizeChanges", OptionKind::Bool, &WarehouseSettings::minimizeChanges},
    {u"/edi/forceCountUpdate", OptionKind::Bool, &WarehouseSettings::forceCountUpdate},
    {u"/edi/ignoreGenericSegments", OptionKind::Bool, &WarehouseSettings::ignoreGenericSegments},
    {u"/edi/preserveParsedText", OptionKind::Bool, &WarehouseSettings::preserveParsedText},
    {u"/edi/cutFieldsWhenRead", OptionKind::Bool, &WarehouseSettings::cutFieldsWhenRead},
};

// The name up to and including its first "?", or the whole name.
std::u16string_view cutAtQuery(std::u16string_view name) {
  const size_t query = name.find(u'?');
  return query == std::u16string_view::npos ? name : name.substr(0, query + 1);
}

const OptionEntry& findOption(const std::u16string& name) {
  const std::u16string_view cut = cutAtQuery(name);
  const std::u16string_view prefix = OptionUriPrefix;
  if (cut.substr(0, prefix.size()) == prefix) {
    const std::u16string_view path = cut.substr(prefix.size());
    for (const OptionEntry& option : kOptions)
      if (option.path == path) return option;
  }
  throw BadParameter(messages::kUnknownOptionBefore + narrow(name) + messages::kUnknownOptionAfter);
}

[[noreturn]] void throwWrongType(const std::u16string& name, const std::type_info& wanted, const Any::any& given) {
  throw BadParameter(messages::kExpectedOptionBefore + narrow(name) + messages::kExpectedOptionWanted +
                     Any::printableTypeName(wanted) + messages::kExpectedOptionGiven +
                     Any::printableTypeName(given.type()) + messages::kExpectedOptionAfter);
}

template <class T>
const T& requireType(const std::u16string& name, const Any::any& value) {
  const T* held = Any::any_cast<T>(&value);
  if (!held) throwWrongType(name, typeid(T), value);
  return *held;
}

// The query of a severity option: pairs of key "=" value joined by "&", keys upper-cased, a later
// key overwriting an earlier one.
struct SeverityQuery {
  int errorNumber = 0;
  std::string setName;
};

SeverityQuery parseSeverityQuery(std::u16string_view name) {
  std::map<std::u16string, std::u16string> pairs;
  const size_t start = name.find(u'?');
  std::u16string_view rest = start == std::u16string_view::npos ? std::u16string_view() : name.substr(start + 1);
  while (!rest.empty()) {
    const size_t amp = rest.find(u'&');
    const std::u16string_view pair = rest.substr(0, amp);
    rest = amp == std::u16string_view::npos ? std::u16string_view() : rest.substr(amp + 1);
    const size_t eq = pair.find(u'=');
    std::u16string key(pair.substr(0, eq));
    for (char16_t& unit : key)
      if (unit >= u'a' && unit <= u'z') unit = static_cast<char16_t>(unit - u'a' + u'A');
    pairs[key] = eq == std::u16string_view::npos ? std::u16string() : std::u16string(pair.substr(eq + 1));
  }

  SeverityQuery query;
  if (const auto error = pairs.find(u"ERROR"); error != pairs.end()) {
    // Leading decimal digits, with an optional sign; anything else reads as 0.
    std::u16string_view digits = error->second;
    bool negative = false;
    if (!digits.empty() && (digits[0] == u'-' || digits[0] == u'+')) {
      negative = digits[0] == u'-';
      digits.remove_prefix(1);
    }
    long long value = 0;
    for (char16_t unit : digits) {
      if (unit < u'0' || unit > u'9') break;
      value = std::min<long long>(value * 10 + (unit - u'0'), 0x7FFFFFFF);
    }
    query.errorNumber = static_cast<int>(negative ? -value : value);
  }
  if (const auto set = pairs.find(u"MESSAGESET"); set != pairs.end()) query.setName = narrow(set->second);
  return query;
}

// An empty name gives the first set; otherwise the first set whose name matches exactly.
MessageSetDefn& findSetForSeverity(MessageWarehouseDefn& warehouse, const std::string& setName) {
  const auto& sets = warehouse.getMessageSets();
  if (setName.empty()) return *sets.front();
  for (const auto& set : sets)
    if (set->getName().view() == setName) return *set;
  throw BadParameter(messages::kMessageSetNotFound + setName);
}

}  // namespace

MessageFactory::MessageFactory() : warehouse(std::make_unique<MessageWarehouseDefn>()) {}

MessageFactory::~MessageFactory() = default;

void MessageFactory::LoadDefinition(const std::string& path) { warehouse->load(path); }

namespace {
// Lets the definition reader take bytes in memory as its stream without copying them.
class MemoryBuffer : public std::streambuf {
 public:
  MemoryBuffer(const uint8_t* bytes, size_t size) {
    char* begin = const_cast<char*>(reinterpret_cast<const char*>(bytes));
    setg(begin, begin, begin + size);
  }
};
}  // namespace

void MessageFactory::LoadDefinition(const uint8_t* bytes, size_t size) {
  MemoryBuffer buffer(bytes, size);
  std::istream stream(&buffer);
  DefinitionFile file(stream);
  warehouse->read(file);
}

std::unique_ptr<MessageElement> MessageFactory::CreateMessage(const std::string& name) {
  const MessageDefn* found = nullptr;
  const size_t cut = name.find_first_of("./");
  const auto findIn = [&](const MessageSetDefn& set, std::string_view messageName) {
    for (const auto& message : set.getMessages()) {
      if (equalIgnoringCase(message->getName().view(), messageName)) return message.get();
    }
    return static_cast<MessageDefn*>(nullptr);
  };
  if (cut != std::string::npos) {
    const std::string_view setName = std::string_view(name).substr(0, cut);
    for (const auto& set : warehouse->getMessageSets()) {
      if (!equalIgnoringCase(set->getName().view(), setName)) continue;
      found = findIn(*set, std::string_view(name).substr(cut + 1));
      break;
    }
  } else {
    for (const auto& set : warehouse->getMessageSets()) {
      if ((found = findIn(*set, name))) break;
    }
  }
  if (!found) return nullptr;
  auto message = std::make_unique<MessageImpl>(*found, nullptr, 0);
  message->setCreated(true);
  return message;
}

std::unique_ptr<MessageElement> MessageFactory::Parse(const char16_t* text) {
  if (!text || !*text) return nullptr;
  // One copy of the text, which the tree's values may point into for as long as the tree lives.
  auto source = std::make_shared<const std::u16string>(text);
  StringParserStream stream(source->data(), static_cast<int32_t>(source->size()));
  return MessageParser::parseTopLevel(*warehouse, source, stream, nullptr);
}

bool MessageFactory::IsDefinitionLoaded() const { return warehouse->getMessageSetCount() > 0; }

bool MessageFactory::GetUserData(const std::u16string& key, std::u16string& value) const {
  auto found = warehouse->findUserData(key);
  if (!found) return false;
  value = std::move(*found);
  return true;
}

bool MessageFactory::GetValidationCaching() const { return warehouse->getSettings().validationCaching; }
void MessageFactory::SetValidationCaching(bool value) { warehouse->getSettings().validationCaching = value; }
bool MessageFactory::GetCreateGenericMessages() const { return warehouse->getSettings().createGenericMessages; }
void MessageFactory::SetCreateGenericMessages(bool value) { warehouse->getSettings().createGenericMessages = value; }
uint32_t MessageFactory::GetFlags() const { return warehouse->getSettings().flags; }
void MessageFactory::SetFlags(uint32_t value) { warehouse->getSettings().flags = value; }

namespace {
void checkSingleFlag(uint32_t flag, const char* tooManyText) {
  if (flag == 0) throw BadParameter(messages::kNoFlagSpecified);
  if (std::popcount(flag) != 1) throw BadParameter(tooManyText);
}
}  // namespace

bool MessageFactory::GetFlag(uint32_t flag) const {
  checkSingleFlag(flag, messages::kGetOneFlagOnly);
  return (warehouse->getSettings().flags & flag) != 0;
}

void MessageFactory::SetFlag(uint32_t flag, bool value) {
  checkSingleFlag(flag, messages::kSetOneFlagOnly);
  uint32_t& flags = warehouse->getSettings().flags;
  flags = value ? (flags | flag) : (flags & ~flag);
}

Any::any MessageFactory::GetOption(const std::u16string& name) const {
  const OptionEntry& option = findOption(name);
  const WarehouseSettings& settings = warehouse->getSettings();
  switch (option.kind) {
    case OptionKind::Bool: return Any::any(settings.*option.boolField);
    case OptionKind::Int: return Any::any(static_cast<int>(settings.*option.intField));
    case OptionKind::Double: return Any::any(settings.*option.doubleField);
    case OptionKind::WideString: return Any::any(settings.*option.stringField);
    case OptionKind::NotImplemented: throw BadParameter(messages::kCacheSegmentCountNotImplemented);
    case OptionKind::Severity: {
      if (!IsDefinitionLoaded()) throw BadParameter(messages::kNoMessageSetsLoaded);
      const SeverityQuery query = parseSeverityQuery(name);
      MessageSetDefn& set = findSetForSeverity(*warehouse, query.setName);
      return Any::any(static_cast<int>(set.getValidationErrorSetting(query.errorNumber).getErrorType()));
    }
  }
  return {};
}

void MessageFactory::SetOption(const std::u16string& name, const Any::any& value) {
  const OptionEntry& option = findOption(name);
  WarehouseSettings& settings = warehouse->getSettings();
  switch (option.kind) {
    case OptionKind::Bool:
      // An empty value switches a bool option on.
      settings.*option.boolField = value.empty() ? true : requireType<bool>(name, value);
      return;
    case OptionKind::Int: settings.*option.intField = requireType<int>(name, value); return;
    case OptionKind::Double: settings.*option.doubleField = requireType<double>(name, value); return;
    case OptionKind::WideString: settings.*option.stringField = requireType<std::u16string>(name, value); return;
    case OptionKind::NotImplemented: throw BadParameter(messages::kCacheSegmentCountNotImplemented);
    case OptionKind::Severity: {
      if (!IsDefinitionLoaded()) throw BadParameter(messages::kNoMessageSetsLoaded);
      // Stored unchecked: the host may write any number.
      const auto severity = static_cast<EVErrType>(requireType<int>(name, value));
      const SeverityQuery query = parseSeverityQuery(name);
      if (query.setName.empty()) {
        for (const auto& set : warehouse->getMessageSets())
          set->settingWithNumber(query.errorNumber).setErrorType(severity);
      } else {
        findSetForSeverity(*warehouse, query.setName).settingWithNumber(query.errorNumber).setErrorType(severity);
      }
      // Lists copied from now on start with the new severity.
      warehouse->forgetSeparatorPrototypes();
      return;
    }
  }
}

}  // namespace vantrelia
