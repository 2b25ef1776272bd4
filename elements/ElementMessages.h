#pragma once
// Texts that element nodes hand to hosts in their exceptions. Formats with %d and %s go through
// formatMessage; the index range texts live with checkIndex in the foundation.

namespace vantrelia::messages {

// Operations that only repeating nodes (sets, repeat items, repeating and array fields) have.
inline constexpr const char* kAppendElementRepeatingOnly =
    "appendElement() may only be called on repeating items";
inline constexpr const char* kRemoveElementAtRepeatingOnly =
    "removeElementAt() may only be called on repeating items";
inline constexpr const char* kRemoveAllElementsRepeatingOnly =
    "removeAllElements() may only be called on repeating items";

// Binary values. Messages and array fields use the first text, every other refusing node the second.
inline constexpr const char* kSetBinaryPrimitiveValuesOnly =
    "setValue(const unsigned char*,int) can only be called on primitive binary values";
inline constexpr const char* kSetBinaryPrimitiveFieldsOnly =
    "setValue(const unsigned char*,int) can only be called on primitive binary fields";
inline constexpr const char* kGetBinaryValuePrimitiveOnly =
    "getBinaryValue() may only be called on primitive binary fields";

inline constexpr const char* kSegmentNumberInSegmentOnly =
    "getSegmentNumber() can only be called on components within a segment";
inline constexpr const char* kSegmentNumberInMessageInSegmentOnly =
    "getSegmentNumberInMessage() can only be called on components within a segment";
inline constexpr const char* kUnknownSegmentsMessagesAndGroupsOnly =
    "Unknown segments can only be retrieved from messages and segment groups";
inline constexpr const char* kMessageWithoutParent = "Message does not have a parent element";
inline constexpr const char* kSegmentsNotNull = "Segments may not be set to null";

inline constexpr const char* kGetElementAtOnPrimitive =
    "getElementAt() may not be called on primitive fields";
inline constexpr const char* kGetElementCollectionOnPrimitive =
    "getElementCollection() may not be called on primitive fields";

// Paths of named nodes: the head of the path first, the node's definition name second.
inline constexpr const char* kChildNotFoundInMessage = "Child %s not found in message %s";
inline constexpr const char* kChildNotFoundInGroup = "Child %s not found in segment group %s";
inline constexpr const char* kChildNotFoundInSegment = "Child %s of segment %s not found";
inline constexpr const char* kChildNotFoundInComposite = "Child %s of composite %s not found";
inline constexpr const char* kChildNotFoundInUnknownMessage = "Child %s not found in unknown message %s";
inline constexpr const char* kChildNotFoundInUnknownSegment = "Child %s not found in unknown segment %s";

// Paths of indexed nodes. The bracket texts are built around the path, not formatted.
inline constexpr const char* kPathNullOrEmpty = "Specified path is null or empty";
inline constexpr const char* kPathNull = "Specified path is null";
inline constexpr const char* kIndexNotFoundBefore = "Index not found in path ";
inline constexpr const char* kIndexNotFoundAfter = " as it does not begin with a square bracket";
inline constexpr const char* kMissingBracketBefore = "Specified index ";
inline constexpr const char* kMissingBracketAfter = " is missing closing square bracket";
inline constexpr const char* kNotValidArrayIndex = "%s is not a valid array index";
inline constexpr const char* kIndexInvalid = "Specified index %s is invalid";
inline constexpr const char* kNoClosingBracketInIndex = "Could not find closing square bracket ']' in index %s";

inline constexpr const char* kMessageTypeNullOrEmpty = "Message type is null or empty";
inline constexpr const char* kMessageTypeNotFound = "Message type %s not found";
inline constexpr const char* kInvalidSeparator = "Invalid separator specified";

// Count operations that a node kind can't answer.
inline constexpr const char* kCannotCountFields = "Cannot count fields";
inline constexpr const char* kCannotCountComposites = "Cannot count composites";
inline constexpr const char* kInvalidPathInCountItem = "Invalid path in count item";
inline constexpr const char* kGroupCountOfSegment = "Group count cannot count segments";
inline constexpr const char* kMessageCountOfSegment = "Message count cannot count segments";
inline constexpr const char* kNoItemsInSegmentGroup = "No items in segment group";

// Values of fields.
inline constexpr const char* kSetBinaryOnPrimitiveBinaryOnly =
    "setValue(const unsigned char*, int) may only be called on primitive binary fields";
inline constexpr const char* kNegativeBinaryLength = "The length of the binary field data may not be negative";
inline constexpr const char* kBinaryValueOfComposite = "Cannot set the binary value of a composite field";

}  // namespace vantrelia::messages
