// Entries of the plain listing: an id and its values.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace quenlor {

class IEntry {
 public:
  virtual void setEntryID(std::string id) = 0;
  virtual std::string getEntryID() const = 0;
  virtual void addEntryAttribute(std::string value) = 0;
  virtual std::string getEntryAttribute(int index) const = 0;  // empty outside 0 .. number - 1
  virtual int getAttributeNumber() const = 0;
  virtual ~IEntry() = default;
};

// Prints its values as they are.
class SimpleEntry : public IEntry {
 public:
  void setEntryID(std::string id) override { m_id = std::move(id); }
  std::string getEntryID() const override { return m_id; }
  void addEntryAttribute(std::string value) override { m_values.push_back(std::move(value)); }
  std::string getEntryAttribute(int index) const override;
  int getAttributeNumber() const override { return static_cast<int>(m_values.size()); }

 private:
  std::string m_id;
  std::vector<std::string> m_values;
};

// Maps each value: the first search text, in ascending order, that occurs anywhere in the value
// gives its replacement; else the default replacement, else the value itself. The order decides
// between search texts that contain each other.
class AttributeReplacingEntry : public SimpleEntry {
 public:
  void SetReplacement(const std::string& from, const std::string& to) { m_replacements[from] = to; }
  void SetDefaultReplacement(const std::string& text) { m_default = text; }
  std::string getEntryAttribute(int index) const override;

 private:
  std::map<std::string, std::string> m_replacements;
  std::string m_default;
};

}  // namespace quenlor
