// Prints entries, one line each: the id, ":\t", and every value followed by one blank.
#pragma once

#include <string>
#include <vector>

#include "listing/Entry.h"

namespace quenlor {

class IEntryFormatter {
 public:
  virtual ~IEntryFormatter() = default;
  virtual std::string format(const IEntry* entry) const = 0;  // empty for a null entry
};

class PlainFormatter : public IEntryFormatter {
 public:
  std::string format(const IEntry* entry) const override;
};

class IPrinter {
 public:
  virtual ~IPrinter() = default;
  virtual void SetEntries(const std::vector<IEntry*>* entries) = 0;  // not owned
  // To the file, truncated first, or to standard output for "stdout". 1, or 0 when the name is null
  // or the file cannot be opened.
  virtual int Print(const char* fileName) = 0;
};

class PlainPrinter : public IPrinter {
 public:
  void SetEntries(const std::vector<IEntry*>* entries) override { m_entries = entries; }
  int Print(const char* fileName) override;

 private:
  const std::vector<IEntry*>* m_entries = nullptr;
};

}  // namespace quenlor
