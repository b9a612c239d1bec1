// Groups, tables, rows and typed attributes: the one shape of everything the scanner finds.
//
// Not thread safe: a table is built by one thread and handed over when it is complete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "base/String.h"
#include "catalogue/Catalogue.h"

namespace quenlor {

// A pair of 32-bit words, kept in the order given.
struct _uquad {
  uint32_t first;
  uint32_t second;
};

// One typed value in a self-describing block: length, attribute id, type code (32 bits each, host
// byte order), then the value from byte 12 on. 8-byte values are therefore not aligned.
class VelTableAttrib {
 public:
  VelTableAttrib(uint32_t id, unsigned char value);
  VelTableAttrib(uint32_t id, unsigned short value);
  VelTableAttrib(uint32_t id, uint32_t value);  // VEL_ULONG is 32 bits wide
  VelTableAttrib(uint32_t id, _uquad value);
  VelTableAttrib(uint32_t id, float value);
  VelTableAttrib(uint32_t id, double value);
  VelTableAttrib(uint32_t id, const char* text);  // multibyte text of the locale; null is empty
  VelTableAttrib(uint32_t id, std::u32string_view text);  // VEL_STRING, whatever the locale
  VelTableAttrib(uint32_t id, const unsigned char* bytes, uint32_t length);
  VelTableAttrib(uint32_t id, long seconds);  // VEL_DATETIME; seconds since the epoch
  VelTableAttrib(uint32_t id, unsigned long long value);
  VelTableAttrib(uint32_t id, long long value);
  // On 64-bit Linux these would silently pick another type or lose their upper half.
  VelTableAttrib(uint32_t id, bool) = delete;
  VelTableAttrib(uint32_t id, char) = delete;
  VelTableAttrib(uint32_t id, signed char) = delete;
  VelTableAttrib(uint32_t id, short) = delete;
  VelTableAttrib(uint32_t id, int) = delete;
  VelTableAttrib(uint32_t id, unsigned long) = delete;
  VelTableAttrib(uint32_t id, std::nullptr_t) = delete;
  ~VelTableAttrib();
  VelTableAttrib(const VelTableAttrib&) = delete;
  VelTableAttrib& operator=(const VelTableAttrib&) = delete;

  uint32_t getId() const;    // 0 when there is no block
  uint32_t getType() const;  // 0x80000000 when there is no block
  const unsigned char* getAttribPtr() const { return m_block; }  // the raw block, owned by this
  void toString() const;                                         // debug dump to standard output

 private:
  unsigned char* m_block;
};

// A singly linked list that owns its items, in insertion order, with one cursor.
template <class Item>
class VelList {
 public:
  VelList() = default;
  ~VelList() { clear(); }
  VelList(const VelList&) = delete;
  VelList& operator=(const VelList&) = delete;

  void append(Item* item);  // takes ownership; a null item is kept and ends a caller's loop early
  void reset() { m_cursor = nullptr; }
  Item* next();  // the item after the cursor, or null at the end; then the cursor stays
  uint32_t count() const { return m_count; }

 private:
  struct ListNode {
    Item* item;
    ListNode* next;
  };

  void clear();

  ListNode* m_head = nullptr;
  ListNode* m_tail = nullptr;
  ListNode* m_cursor = nullptr;
  uint32_t m_count = 0;
};

// Owns its attributes.
class VelTableRow {
 public:
  int addAttrib(VelTableAttrib* attrib);  // takes ownership; always 1
  uint32_t getNumAttribs() const { return m_attribs.count(); }
  int reset();                // cursor before the first attribute; always 1
  VelTableAttrib* getNext();  // next attribute or null; stays owned by the row
  void toString();            // debug dump to standard output

 private:
  VelList<VelTableAttrib> m_attribs;
};

// Owns its rows.
class VelTable {
 public:
  VelTable(uint32_t groupId, uint32_t version);
  VelTable(const velGroupDef* groupDefs, uint32_t groupId, uint32_t version);

  int addRow(VelTableRow* row);  // takes ownership; always 1
  uint32_t getGroupId() const { return m_groupId; }
  uint32_t getGroupVersion() const { return m_version; }
  uint32_t getNumRows() const { return m_rows.count(); }
  const char* getGroupName() const;  // in this table's catalogue; "Unknown" when it has no such id
  const velGroupDef* getGroupDefinitionFromId() const;  // null when the catalogue has no such id
  bool isModern() const { return m_groupDefs == MODERN_GROUPS_DEF; }
  int reset();             // cursor before the first row; always 1
  VelTableRow* getNext();  // next row or null; stays owned by the table
  void toString();         // debug dump to standard output

 private:
  uint32_t m_version;
  uint32_t m_groupId;
  const velGroupDef* m_groupDefs;
  VelList<VelTableRow> m_rows;
};

// Base of all collectors.
class VelGroup {
 public:
  VelGroup(uint32_t groupId, uint32_t version);
  virtual ~VelGroup();
  VelGroup(const VelGroup&) = delete;
  VelGroup& operator=(const VelGroup&) = delete;

  virtual VelTable* getTable() = 0;  // a new table, owned by the caller, or null: nothing to report
  virtual VelTable* generateTable();  // the guarded part of a collection; null unless overridden

  uint32_t getGroupId() const { return m_groupId; }
  uint32_t getGroupVersion() const { return m_version; }
  String getGroupName() const;

  // Extra tables belong to whoever fetches them; they are not freed here.
  void addExtraTable(VelTable* table);
  VelTable* getExtraTable(int index) const;  // null outside 0 .. count - 1
  int getExtraTableCount() const { return m_extraTableCount; }

 private:
  uint32_t m_version;
  uint32_t m_groupId;
  VelTable** m_extraTables = nullptr;
  int32_t m_extraTableCount = 0;
};

// Bytes that a text needs behind byte 12 of its block: 8 when null or empty, else 4 per byte + 8.
uint32_t SizeAsVelString(const char* text);
// Stores the text as count (terminator included) and 32-bit characters; never beyond
// SizeAsVelString.
void StringToVelString(const char* text, unsigned char* destination);
// Bytes that count and characters of a stored string really use.
uint32_t SizeofVelString(const unsigned char* velString);
// Writes the 26 characters YYYY-MM-DD-hh.mm.ss.000000 of the local time; zeros when it has none.
void TimeToVelDateTime(time_t seconds, char* destination);

// The builders that collectors use: the width stands in the name, so nothing is converted silently.
void addUlong(VelTableRow& row, uint32_t id, uint32_t value);
void addUlongLong(VelTableRow& row, uint32_t id, uint64_t value);
void addLongLong(VelTableRow& row, uint32_t id, int64_t value);
void addFloat(VelTableRow& row, uint32_t id, float value);
void addText(VelTableRow& row, uint32_t id, const char* text);
inline void addText(VelTableRow& row, uint32_t id, const std::string& text) {
  addText(row, id, text.c_str());
}
inline void addText(VelTableRow& row, uint32_t id, const String& text) {
  addText(row, id, text.c_str());
}
void addTime(VelTableRow& row, uint32_t id, time_t seconds);
void addCharacters(VelTableRow& row, uint32_t id, std::u32string_view text);

// Any width to the 32 bits of a VEL_ULONG: too large becomes 0xFFFFFFFF, negative becomes 0.
constexpr uint32_t saturateToUlong(uint64_t value) {
  return value > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(value);
}

template <class Item>
void VelList<Item>::append(Item* item) {
  auto* node = new ListNode{item, nullptr};
  (m_tail == nullptr ? m_head : m_tail->next) = node;
  m_tail = node;
  ++m_count;
}

template <class Item>
Item* VelList<Item>::next() {
  ListNode* following = m_cursor == nullptr ? m_head : m_cursor->next;
  if (following == nullptr) return nullptr;
  m_cursor = following;
  return following->item;
}

template <class Item>
void VelList<Item>::clear() {
  for (ListNode* node = m_head; node != nullptr;) {
    const std::unique_ptr<ListNode> owned(node);
    node = node->next;
    delete owned->item;
  }
  m_head = m_tail = m_cursor = nullptr;
  m_count = 0;
}

}  // namespace quenlor
