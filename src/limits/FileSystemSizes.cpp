#include "limits/FileSystemSizes.h"

#include <memory>

#include "limits/TimeoutStatvfs.h"

namespace quenlor {
namespace {

// Each worker that is given up stays in the kernel until its server comes back.
constexpr size_t kMostGivenUp = 64;

WorkerBudget& budgetOfProcess() {
  static WorkerBudget budget(kMostGivenUp);
  return budget;
}

using Parameters = std::shared_ptr<ThreadParams>;

WorkerPool::Request requestFor(const FileSystem& fileSystem, const Parameters& parameters) {
  const auto body = fileSystem.isAutomountPoint ? helper_execute_autofs : helper_execute;
  return {[parameters, body] { body(parameters.get()); }, fileSystem.mayHang};
}

FileSystemSize sizeOf(WorkerPool::Outcome outcome, const ThreadParams& parameters) {
  const bool known = outcome == WorkerPool::Outcome::kAnswered && parameters.rc == 0;
  return {outcome, known ? parameters.result : (struct statvfs){}};
}

}  // namespace

std::vector<FileSystemSize> measureFileSystems(const std::vector<FileSystem>& fileSystems,
                                               const WorkerPool::Limits& limits) {
  std::vector<Parameters> parameters;
  std::vector<WorkerPool::Request> requests;
  for (const FileSystem& fileSystem : fileSystems) {
    parameters.push_back(std::make_shared<ThreadParams>(fileSystem.directory.c_str()));
    requests.push_back(requestFor(fileSystem, parameters.back()));
  }
  WorkerPool pool(limits, budgetOfProcess());
  const auto outcomes = pool.run(std::move(requests));
  std::vector<FileSystemSize> sizes;
  for (size_t i = 0; i < outcomes.size(); ++i) sizes.push_back(sizeOf(outcomes[i], *parameters[i]));
  return sizes;
}

}  // namespace quenlor
