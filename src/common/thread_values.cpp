#include "common/thread_values.h"

#include <filesystem>
#include <mutex>
#include <system_error>

namespace ent {

namespace {

thread_local bool t_debug = false;
thread_local std::string t_log_name;
thread_local std::string t_connection_string;

std::mutex g_log_dir_mutex;
std::string g_log_dir;  // empty: beside the executable

}  // namespace

std::string ExecutableDirectory() {
  std::error_code ec;
  auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) return ".";
  return exe.parent_path().string();
}

bool DebugSwitch() {
  return t_debug;
}
void SetDebugSwitch(bool on) {
  t_debug = on;
}

const std::string& LogName() {
  return t_log_name;
}
void SetLogName(std::string name) {
  t_log_name = std::move(name);
}

const std::string& ShopConnectionString() {
  return t_connection_string;
}
void SetShopConnectionString(std::string connection_string) {
  t_connection_string = std::move(connection_string);
}

std::string LogDirectory() {
  std::lock_guard lock(g_log_dir_mutex);
  if (!g_log_dir.empty()) return g_log_dir;
  return ExecutableDirectory() + "/log";
}

void SetLogDirectory(std::string directory) {
  std::lock_guard lock(g_log_dir_mutex);
  g_log_dir = std::move(directory);
}

}  // namespace ent
