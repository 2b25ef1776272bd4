#include "tool/BundledDefinitions.h"

#include <cctype>

#include "foundation/Any.h"
#include "tool/BundledBytes.h"

namespace vantrelia::tool {

namespace {

const BundledBytes* findBundled(std::string_view name) {
  for (const BundledBytes& bundled : BundledBytes::all())
    if (bundled.name == name) return &bundled;
  return nullptr;
}

// An NCPDP transaction header: a six-digit BIN, then the version "D0".
bool isNcpdpHeader(std::u16string_view head) {
  if (head.size() < 8) return false;
  for (size_t i = 0; i < 6; ++i)
    if (head[i] < u'0' || head[i] > u'9') return false;
  return head.substr(6, 2) == u"D0";
}

}  // namespace

BundledDefinitions::BundledDefinitions(std::string pcfOption, bool preserve)
    : pcf(std::move(pcfOption)), preserveParsedText(preserve) {}

std::string BundledDefinitions::choose(std::u16string_view head) {
  if (head.starts_with(u"MSH") || head.starts_with(u"FHS") || head.starts_with(u"BHS")) return "hl7-v2.5";
  if (head.starts_with(u"ISA")) return "x12";
  if (head.starts_with(u"UNA") || head.starts_with(u"UNB")) return "edifact_d96a";
  if (isNcpdpHeader(head)) return "ncpdp-d0";
  return "default";
}

bool BundledDefinitions::isBundled(std::string_view name) { return findBundled(name) != nullptr; }

std::string BundledDefinitions::names() {
  std::string text;
  for (const BundledBytes& bundled : BundledBytes::all()) {
    if (!text.empty()) text += ", ";
    text += bundled.name;
  }
  return text;
}

std::string BundledDefinitions::nameFor(std::u16string_view head) const { return pcf.empty() ? choose(head) : pcf; }

MessageFactory& BundledDefinitions::factoryFor(std::u16string_view head) { return factory(nameFor(head)); }

MessageFactory& BundledDefinitions::factory(const std::string& name) {
  auto found = loaded.find(name);
  if (found != loaded.end()) return *found->second;
  auto made = std::make_unique<MessageFactory>();
  if (const BundledBytes* bundled = findBundled(name))
    made->LoadDefinition(bundled->begin, static_cast<size_t>(bundled->end - bundled->begin));
  else made->LoadDefinition(name);
  made->SetOption(std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText", Any::any(preserveParsedText));
  return *loaded.emplace(name, std::move(made)).first->second;
}

}  // namespace vantrelia::tool
