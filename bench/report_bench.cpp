// Throughput of the heavy paths on a medium sample shop: a free-SQL document of many rows, the
// invoice revenue report, and the result document's text. Run build/entprcreq_bench; the shop is
// created once in a temporary folder (a few seconds).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>

#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/result_document.h"
#include "job/sendable.h"
#include "sampledb/sample_db.h"

namespace {

const std::string& MediumShop() {
  static const std::string path = [] {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / "entprcreq-bench-medium.db";
    if (!std::filesystem::exists(file)) {
      ent::sampledb::Options options;
      options.size = ent::sampledb::Size::kMedium;
      ent::sampledb::CreateSampleDb(file.string(), options);
    }
    return file.string();
  }();
  return path;
}

// Runs a job and returns the length of the document it would post.
size_t PostedLength(const std::string& code, const std::vector<std::string>& params, const std::string& sql) {
  ent::SetShopConnectionString("Provider=SQLite;Data Source=" + MediumShop());
  ent::clsPrebuiltReport job;
  job.CustomReport = !sql.empty();
  job.sqlString = sql;
  job.reportName = code;
  for (size_t i = 0; i < params.size(); ++i) job.addParam("p" + std::to_string(i), params[i]);
  auto result = job.generateDOC();
  return result && result->XMLDocument() ? result->XMLDocument()->bytes() : 0;
}

void BM_FreeSqlLines(benchmark::State& state) {
  const std::string sql = "select top " + std::to_string(state.range(0)) + " * from woparts order by 1";
  size_t bytes = 0;
  MediumShop();
  for (auto _ : state) bytes = PostedLength("", {}, sql);
  state.SetItemsProcessed(state.iterations() * state.range(0));
  state.counters["document_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_FreeSqlLines)->Arg(1000)->Arg(40000)->Unit(benchmark::kMillisecond);

void BM_InvoiceRevenueYear(benchmark::State& state) {
  size_t bytes = 0;
  MediumShop();
  for (auto _ : state) bytes = PostedLength("INVSUM01", {"1/1/2024", "11/30/2024", "true", "true"}, "");
  state.counters["document_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(BM_InvoiceRevenueYear)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
