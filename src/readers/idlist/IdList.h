// The lists of names of PCI and USB ids that distributions carry (pci.ids, usb.ids). Source: the
// grammar in the lists' own heads; both have the same one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/Outcome.h"

namespace quenlor {

// Names that are wanted, and once a list was taken, those that it has. The ids are told first, so
// that a list of a million bytes is gone through once and nothing else of it is kept.
class IdNames {
 public:
  void wantDevice(uint16_t vendor, uint16_t device);
  // Class, and the subclass of it.
  void wantClass(uint8_t baseClass, uint8_t subclass);
  bool wantsNothing() const { return m_vendors.empty() && m_classes.empty(); }

  // Takes the names out of a list, from its front to its back. The first name of an id holds. The
  // list may come in pieces, wherever they are cut; endList() takes a last line without an end, and
  // another list may follow.
  void take(std::string_view piece);
  void endList();

  // Bytes of the list; nothing when it has no name of the id, or none was wanted.
  std::optional<std::string> vendor(uint16_t vendor) const;
  std::optional<std::string> device(uint16_t vendor, uint16_t device) const;
  // The subclass' name, else that of the class.
  std::optional<std::string> className(uint8_t baseClass, uint8_t subclass) const;

 private:
  struct Entry {
    std::string name;  // empty: not found
    std::map<uint16_t, std::string> below;
  };
  using Entries = std::map<uint16_t, Entry>;

  std::string_view takeRest(std::string_view piece);
  void takeLine(std::string_view line);
  void takeTop(std::string_view line);
  void takeBelow(std::string_view line);

  Entries m_vendors;
  Entries m_classes;
  std::string m_rest;        // of a line whose end is in the next piece
  Entry* m_above = nullptr;  // where lines below the present one belong; null: nowhere
  size_t m_digits = 0;       // of the ids of those lines
};

inline constexpr size_t kIdListLimit = 16u << 20;  // bytes

// Reads the first list that exists at one of the paths, and takes its names. What could not be
// read is noted as "what: cause". False when there is no list.
bool readIdList(std::span<const char* const> paths, const char* what, IdNames& names,
                Outcome& outcome);

}  // namespace quenlor
