#include "tool/MessageJson.h"

#include "definitions/MatchDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "definitions/VisibleChildTable.h"
#include "foundation/Utf8.h"
#include "tool/FieldJson.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

namespace {

Json matchesJson(const std::vector<std::unique_ptr<MatchDefn>>& matches) {
  Json json = Json::array();
  for (const auto& match : matches)
    json.push_back({{"FieldPath", match->getFieldPath().str()}, {"value", wideToUtf8(match->getValue().view())}});
  return json;
}

Json visibleJson(const VisibleChildTable* table) {
  if (!table) return nullptr;
  return {{"entryCount", table->getEntryCount()}, {"visibleTotal", table->getVisibleTotal()}, {"visibleCounts", table->getVisibleCounts()}};
}

Json userDataJson(const UserDataMap& userData) {
  Json json = Json::object();
  for (const auto& [index, value] : userData) json[std::to_string(index)] = wideToUtf8(value.view());
  return json;
}

Json itemJson(const MessageItemDefn& item) {
  Json json;
  json["Name"] = item.getName().str();
  json["id"] = item.getId();
  json["MessageItemType"] = item.getMessageItemType();
  json["Required"] = item.isRequired();
  json["Hidden"] = item.isHidden();
  json["MinRepeats"] = item.getMinRepeats();
  json["MaxRepeats"] = item.getMaxRepeats();
  switch (item.getMessageItemType()) {
    case MessageItemDefn::kSegmentItem:
      json["segment"] = item.getSegment()->getName().str();
      json["matches"] = matchesJson(item.getMatches());
      // What this place lays over the segment's fields, shown as a composite field's overrides are.
      json["fieldInstances"] = item.getFieldInstances()
                                   ? toJson(static_cast<const FieldInstancesControl&>(*item.getFieldInstances()))
                                   : Json(nullptr);
      break;
    case MessageItemDefn::kGroupItem: {
      const SegmentGroupDefn& group = *item.getGroup();
      Json items = Json::array();
      for (const auto& child : group.getItems()) items.push_back(itemJson(*child));
      json["group"] = {{"Name", group.getName().str()},
                       {"ChoiceGroup", group.isChoiceGroup()},
                       {"UnorderedGroup", group.isUnorderedGroup()},
                       {"visibleChildren", visibleJson(group.getVisibleChildren())},
                       {"items", items}};
      break;
    }
    default:
      json["setId"] = item.getSetId();
      json["messageSet"] = item.getMessageSet() ? Json(item.getMessageSet()->getName().str()) : Json(nullptr);
  }
  json["userData"] = userDataJson(item.getUserData());
  return json;
}

Json tableJson(const StateTable& table) {
  Json json = Json::array();
  for (const auto& state : table) {
    Json transitions = Json::array();
    for (const auto& transition : state->getTransitions())
      transitions.push_back({{"key", transition.key}, {"distance", transition.distance}, {"target", transition.target->getIndex()}});
    json.push_back({{"index", state->getIndex()},
                    {"path", state->getPath()},
                    {"item", state->getItem() ? Json(state->getItem()->getName().str()) : Json(nullptr)},
                    {"transitions", transitions}});
  }
  return json;
}

}  // namespace

Json toJson(const MessageDefn& message) {
  Json json;
  json["Name"] = message.getName().str();
  Json types = Json::array();
  for (const auto& type : message.getTypes()) types.push_back(wideToUtf8(type.view()));
  json["types"] = types;
  json["wildTypes"] = message.getWildTypes();
  json["hasWildType"] = message.getHasWildType();
  Json items = Json::array();
  for (const auto& item : message.getItems()) items.push_back(itemJson(*item));
  json["items"] = items;
  json["matches"] = matchesJson(message.getMatches());
  json["visibleChildren"] = visibleJson(message.getVisibleChildren());
  json["stateCount"] = message.getStateCount();
  json["strictStates"] = tableJson(message.getStrictStates());
  json["relaxedStates"] = tableJson(message.getRelaxedStates());
  json["userData"] = userDataJson(message.getUserData());
  return json;
}

}  // namespace vantrelia::tool
