#pragma once
// The engine's single entry object: it owns the loaded definition and every setting that trees
// made by it read.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "foundation/Any.h"

namespace vantrelia {

class MessageElement;
class MessageWarehouseDefn;

// Every option name is this prefix followed by a path such as "/edi/minimizeChanges".
inline constexpr const char16_t* OptionUriPrefix = u"urn:vantrelia:options";

class MessageFactory {
 public:
  MessageFactory();
  virtual ~MessageFactory();
  MessageFactory(const MessageFactory&) = delete;
  MessageFactory& operator=(const MessageFactory&) = delete;

  // Replaces the whole earlier definition. Throws InvalidFile on any failure.
  void LoadDefinition(const std::string& path);
  // The same from the bytes of a definition file held in memory, e.g. one built into a program.
  // The bytes are read during the call only.
  void LoadDefinition(const uint8_t* bytes, size_t size);
  // A new message from its definition, or null if the name matches nothing. The name is a bare
  // message name or a set name and a message name joined by "/" or ".".
  std::unique_ptr<MessageElement> CreateMessage(const std::string& name);
  // The root of a tree for the wire text, or null when nothing recognises it.
  std::unique_ptr<MessageElement> Parse(const char16_t* text);
  bool IsDefinitionLoaded() const;

  // False, and value untouched, when the key or its value is absent.
  bool GetUserData(const std::u16string& key, std::u16string& value) const;

  bool GetValidationCaching() const;
  void SetValidationCaching(bool value);
  bool GetCreateGenericMessages() const;
  void SetCreateGenericMessages(bool value);
  uint32_t GetFlags() const;
  void SetFlags(uint32_t value);
  bool GetFlag(uint32_t flag) const;
  void SetFlag(uint32_t flag, bool value);

  Any::any GetOption(const std::u16string& name) const;
  void SetOption(const std::u16string& name, const Any::any& value);

  MessageWarehouseDefn& getWarehouse() { return *warehouse; }
  const MessageWarehouseDefn& getWarehouse() const { return *warehouse; }

 private:
  std::unique_ptr<MessageWarehouseDefn> warehouse;
};

}  // namespace vantrelia
