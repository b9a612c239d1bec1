#include "scan/quenlor.h"

#include <clocale>
#include <cstdio>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/ExitStatus.h"
#include "base/File.h"
#include "base/StandardOutput.h"
#include "base/Utf8.h"
#include "config/DovCfg.h"
#include "config/ScanSettings.h"
#include "factory/GroupFactory.h"
#include "host/Host.h"
#include "host/ScanState.h"
#include "limits/ScanDeadline.h"
#include "listing/EntryBuilder.h"
#include "listing/ModernEntryBuilder.h"
#include "log/CcLogWrapper.h"
#include "scan/CommandLine.h"
#include "scan/GroupChoice.h"
#include "writers/OutputTarget.h"
#include "writers/mifUtil.h"
#include "writers/xmlUtil.h"

namespace quenlor {
namespace {

constexpr const char* kSourcePath = "../../../src/invscan/scanengine/quenlor.cpp";
constexpr const char* kTraceProperties = "DovTrace.properties";
constexpr const char* kRootName = "Hardware";
constexpr const char* kComponentName = "Marrow Hardware Inventory UNIX MIF Generator";

constexpr TraceFunction kAt{kSourcePath, "quenlor()"};

// Says for a person what an exit status means; nobody may be reading, so nothing depends on it.
void explainFailure(const CommandLine& options, int status) {
  const char* const format = [status] {
    switch (status) {
      case kExitScanConfigMalformed:
        return GroupFactory::getInstance().isTooDeep()
                   ? "quenlor: %s: the scan configuration is nested too deeply\n"
                   : "quenlor: %s: the scan configuration is not well-formed XML\n";
      case kExitScanConfigUnreadable:
        return "quenlor: %s: the scan configuration cannot be read\n";
      case kExitOutputClose:
      case kExitOutputOpen:
      case kExitListPrint:
        return "quenlor: %s: the output cannot be written\n";
      default:
        return "";
    }
  }();
  const bool aboutConfig =
      status == kExitScanConfigMalformed || status == kExitScanConfigUnreadable;
  const std::string& file = aboutConfig ? options.configFile : options.outputFile;
  std::fprintf(stderr, format, file.c_str());
}

// Names go to a terminal or a log: no control character of theirs does.
void nameUnknownGroups(const std::vector<String>& names) {
  for (const String& name : names) {
    std::fprintf(stderr, "quenlor: \"%s\": no such group\n", cleanUtf8(name.c_str()).c_str());
  }
}

// The scan: chosen groups, one after the other, each table written as soon as it is there.
class Scan {
 public:
  Scan(const CommandLine& options, const ScanSettings& settings)
      : m_log(getCcLogHw()),
        m_options(options),
        m_settings(settings),
        m_factory(GroupFactory::getInstance()),
        m_target(options.outputFile, settings.isModern()) {}

  int run() {
    m_factory.initialise();
    m_log->traceMAX(kAt(), "hardware After getIstance");

    int code = chooseGroups();
    if (code != 0) return end(code);
    code = printHwHeader(m_options.xml, output());
    if (code != 0) return end(code);
    for (const String& name : m_groupNames) {
      code = scanGroup(name);
      if (code != 0) break;
    }
    if (code == 0) {
      const ReadersTurn turn(isToStandardOutput());
      code = printHwFooter(m_options.xml, output());
      if (code != 0) return end(code);
      code = complete();
    }
    end(code);
    CcLogWrapper::cleanupInstances();
    return code;
  }

 private:
  const char* output() const { return m_target.file(); }

  bool isToStandardOutput() const { return m_options.outputFile == kStandardOutput; }

  // Modern scans vouch for standard output too; classic ones only say that it was lost.
  int complete() {
    if (m_settings.isModern() && isToStandardOutput()) return finishStandardOutput();
    return m_target.commit();
  }

  int end(int code) {
    m_log->traceMidExit(kAt(), "hardware return=%d", code);
    return code;
  }

  int chooseGroups() {
    const int code = nameGroups();
    if (code != 0 || !m_settings.isModern()) return code;
    GroupChoice choice = chooseModernGroups(m_groupNames, m_factory.catalogue());
    nameUnknownGroups(choice.unknown);
    m_groupNames = std::move(choice.groups);
    return code;
  }

  int nameGroups() {
    if (m_options.configFile.empty()) {
      m_log->traceMAX(kAt(), "hardware No config filename entered");
      m_log->traceMAX(kAt(), "hardware Get all supported groups");
      return m_factory.getAllGroups(m_groupNames);
    }
    const int code = m_factory.loadNodeFromFile(m_options.configFile, kHardwareSection);
    if (code == 0) m_groupNames = m_factory.groupNames();
    if (code != GroupFactory::kSectionAbsent) return code;
    m_log->traceMAX(kAt(),
                    "hardware HW_TAG_TYPE section not present in the config file, taking the "
                    "default hw group");
    return m_factory.getAllGroups(m_groupNames);
  }

  int scanGroup(const String& name) {
    std::unique_ptr<VelGroup> group(m_factory.getGroup(name));
    if (!group) return 0;
    const GroupInProgress inProgress(group->getGroupId());
    const std::unique_ptr<VelTable> table(group->getTable());
    m_log->traceMAX(kAt(), "hardware getTable()");
    int code = table ? write(table.get()) : 0;
    for (int i = 0; i < group->getExtraTableCount(); ++i) {
      const std::unique_ptr<VelTable> extra(group->getExtraTable(i));  // ours, written or not
      if (extra && code == 0) code = write(extra.get());
    }
    group.reset();  // before the table, which must not depend on it
    return code;
  }

  int write(VelTable* table) {
    const ReadersTurn turn(isToStandardOutput());
    const int code = m_options.xml ? printXML(output(), table) : printMif(output(), table);
    m_log->traceMAX(kAt(), m_options.xml ? "hardware printXML()" : "hardware printMif()");
    return code;
  }

  CcLogWrapper* m_log;
  const CommandLine& m_options;
  const ScanSettings& m_settings;
  GroupFactory& m_factory;
  OutputTarget m_target;
  std::list<String> m_groupNames;
};

int printList(const CommandLine& options, const ScanSettings& settings,
              EntryBuilder& entryBuilder) {
  const ReadersTurn turn(options.outputFile == kStandardOutput);
  OutputTarget target(options.outputFile, settings.isModern());
  if (!entryBuilder.PrintEntries(target.file()) || target.commit() != kExitSuccess) {
    return kExitListPrint;
  }
  return kExitSuccess;
}

void announceDeadline(const ScanSettings& settings) {
  if (settings.isModern()) {
    announceScanDeadline(settings.scanLimit);
  } else {
    announceClassicDeadline();
  }
}

// The listing of the sources that are chosen.
std::unique_ptr<EntryBuilder> makeEntryBuilder(const ScanSettings& settings) {
  if (settings.isModern()) return std::make_unique<ModernEntryBuilder>();
  return std::make_unique<EntryBuilder>();
}

int run(const CommandLine& options, const ScanSettings& settings, EntryBuilder& entryBuilder) {
  if (options.list) return printList(options, settings, entryBuilder);
  if (options.wOption) {
    printUsage();
    return kExitUsage;
  }
  return Scan(options, settings).run();
}

// `given` lists instead of the sources' own listing, unless it is null.
int runProgram(int argc, char* argv[], EntryBuilder* given) {
  host().setlocale(LC_ALL, "");
  host().timeZone();  // what is reported of the zone is what holds before any time is converted
  DovCfg::initialize(argc > 0 ? argv[0] : "");
  if (const int error = DovCfg::getError()) return error;
  const std::optional<ScanSettings> settings = configuredScanSettings();
  if (!settings) return DovCfg::kMalformed;
  announceDeadline(*settings);
  GroupFactory::getInstance().chooseSources(*settings);
  const String properties = DovCfg::getKey("config_dir") + File::pathSeparator + kTraceProperties;
  CcLogWrapper::initialize(properties.c_str());
  getCcLogHw()->traceMidEntry(kAt(), "hardware");

  const std::unique_ptr<EntryBuilder> own = given ? nullptr : makeEntryBuilder(*settings);
  EntryBuilder& entryBuilder = given ? *given : *own;
  const CommandLineResult parsed =
      parseCommandLine(argc, argv, [&entryBuilder] { return entryBuilder.BuildAllEntries(1); });
  if (parsed.finished) return parsed.status;
  const int status = run(parsed.options, *settings, entryBuilder);
  if (status != kExitSuccess) explainFailure(parsed.options, status);
  return status;
}

}  // namespace

int quenlor(int argc, char* argv[]) { return runProgram(argc, argv, nullptr); }

int quenlor(int argc, char* argv[], EntryBuilder& entryBuilder) {
  return runProgram(argc, argv, &entryBuilder);
}

int printHwHeader(bool xmlFlag, const char* outputFileName) {
  return xmlFlag ? printXMLHeader(outputFileName, kRootName)
                 : printMifHeader(outputFileName, kComponentName);
}

int printHwFooter(bool xmlFlag, const char* outputFileName) {
  return xmlFlag ? printXMLFooter(outputFileName, kRootName) : printMifFooter(outputFileName);
}

void lowerCase(char*& text) {
  for (char* character = text; *character != '\0'; ++character) {
    if (*character >= 'A' && *character <= 'Z')
      *character = static_cast<char>(*character + ('a' - 'A'));
  }
}

}  // namespace quenlor
