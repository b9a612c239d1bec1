// Tables, rows and the base of all groups.
#include "tables/VelTable.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <new>

namespace quenlor {

int VelTableRow::addAttrib(VelTableAttrib* attrib) {
  m_attribs.append(attrib);
  return 1;
}

int VelTableRow::reset() {
  m_attribs.reset();
  return 1;
}

VelTableAttrib* VelTableRow::getNext() { return m_attribs.next(); }

void VelTableRow::toString() {
  std::printf("\n\t Attribs=%" PRIu32, getNumAttribs());
  reset();
  while (const VelTableAttrib* attrib = getNext()) attrib->toString();
  reset();
}

VelTable::VelTable(uint32_t groupId, uint32_t version) : VelTable(GROUPS_DEF, groupId, version) {}

VelTable::VelTable(const velGroupDef* groupDefs, uint32_t groupId, uint32_t version)
    : m_version(version), m_groupId(groupId), m_groupDefs(groupDefs) {}

int VelTable::addRow(VelTableRow* row) {
  m_rows.append(row);
  return 1;
}

const char* VelTable::getGroupName() const {
  const velGroupDef* group = getGroupDefinitionFromId();
  return group == nullptr || group->name == nullptr ? "Unknown" : group->name;
}

const velGroupDef* VelTable::getGroupDefinitionFromId() const {
  if (m_groupDefs == nullptr) return nullptr;
  for (const velGroupDef* group = m_groupDefs; group->id != kCatalogueEnd; ++group) {
    if (group->id == m_groupId) return group;
  }
  return nullptr;
}

int VelTable::reset() {
  m_rows.reset();
  return 1;
}

VelTableRow* VelTable::getNext() { return m_rows.next(); }

void VelTable::toString() {
  std::printf("\n--------Table %s (%08" PRIX32 ") ver=%" PRIu32, getGroupName(), m_groupId,
              m_version);
  std::printf("\nRows=%" PRIu32, getNumRows());
  reset();
  while (VelTableRow* row = getNext()) row->toString();
  reset();
}

VelGroup::VelGroup(uint32_t groupId, uint32_t version) : m_version(version), m_groupId(groupId) {}

VelGroup::~VelGroup() { delete[] m_extraTables; }

VelTable* VelGroup::getTable() { return nullptr; }

VelTable* VelGroup::generateTable() { return nullptr; }

String VelGroup::getGroupName() const { return getGroupNameFromId(m_groupId); }

// Grows by one entry per call: a group adds at most a few tables.
void VelGroup::addExtraTable(VelTable* table) {
  const auto count = static_cast<size_t>(m_extraTableCount);
  auto* grown = new (std::nothrow) VelTable*[count + 1];
  if (grown == nullptr) return;
  std::copy_n(m_extraTables, count, grown);
  grown[count] = table;
  delete[] m_extraTables;
  m_extraTables = grown;
  ++m_extraTableCount;
}

VelTable* VelGroup::getExtraTable(int index) const {
  return index < 0 || index >= m_extraTableCount ? nullptr : m_extraTables[index];
}

void addUlong(VelTableRow& row, uint32_t id, uint32_t value) {
  row.addAttrib(new VelTableAttrib(id, value));
}

void addUlongLong(VelTableRow& row, uint32_t id, uint64_t value) {
  row.addAttrib(new VelTableAttrib(id, static_cast<unsigned long long>(value)));
}

void addLongLong(VelTableRow& row, uint32_t id, int64_t value) {
  row.addAttrib(new VelTableAttrib(id, static_cast<long long>(value)));
}

void addFloat(VelTableRow& row, uint32_t id, float value) {
  row.addAttrib(new VelTableAttrib(id, value));
}

void addText(VelTableRow& row, uint32_t id, const char* text) {
  row.addAttrib(new VelTableAttrib(id, text));
}

void addCharacters(VelTableRow& row, uint32_t id, std::u32string_view text) {
  row.addAttrib(new VelTableAttrib(id, text));
}

void addTime(VelTableRow& row, uint32_t id, time_t seconds) {
  row.addAttrib(new VelTableAttrib(id, static_cast<long>(seconds)));
}

}  // namespace quenlor
