#include "bench/bench_results.h"

#include <algorithm>

namespace hushwall::bench {
namespace {

// What Google Benchmark appends to a registered name.
std::string registeredName(std::string name) {
  for (const char* suffix : {"/manual_time", "/real_time", "/process_time"}) {
    const std::string s = suffix;
    if (name.size() >= s.size() && name.compare(name.size() - s.size(), s.size(), s) == 0) {
      name.erase(name.size() - s.size());
    }
  }
  for (const char* tag : {"/iterations:", "/repeats:", "/min_time:"}) {
    const auto at = name.find(tag);
    if (at != std::string::npos) name.erase(at);
  }
  return name;
}

double secondsPerUnit(const std::string& unit) {
  if (unit == "ns") return 1e-9;
  if (unit == "us") return 1e-6;
  if (unit == "ms") return 1e-3;
  return 1.0;
}

// Fields of a run that are Google Benchmark's own, not user counters.
bool isOwnField(const std::string& key) {
  static const char* const kOwn[] = {"name", "family_index", "per_family_instance_index",
                                     "run_name", "run_type", "repetitions", "repetition_index",
                                     "threads", "iterations", "real_time", "cpu_time",
                                     "time_unit", "aggregate_name", "aggregate_unit",
                                     "error_occurred", "error_message", "label"};
  return std::find(std::begin(kOwn), std::end(kOwn), key) != std::end(kOwn);
}

}  // namespace

void addResults(const nlohmann::json& output, BenchResults& results, int round) {
  if (!output.contains("benchmarks")) return;
  for (const nlohmann::json& run : output["benchmarks"]) {
    if (run.value("run_type", "iteration") != "iteration") continue;
    const std::string name = registeredName(run.value("run_name", run.value("name", "")));
    if (run.value("error_occurred", false)) {
      results.errors[name] = run.value("error_message", "failed");
      continue;
    }
    Repetition repetition;
    repetition.seconds = run.value("real_time", 0.0) * secondsPerUnit(run.value("time_unit", "ns"));
    for (const auto& [key, value] : run.items()) {
      if (!isOwnField(key) && value.is_number()) repetition.counters[key] = value.get<double>();
    }
    results.runs[name][round * kRepetitionsPerRound + run.value("repetition_index", 0)] =
        repetition;
  }
}

std::optional<double> median(std::vector<double> values) {
  if (values.empty()) return std::nullopt;
  std::sort(values.begin(), values.end());
  const std::size_t mid = values.size() / 2;
  if (values.size() % 2 == 1) return values[mid];
  return (values[mid - 1] + values[mid]) / 2.0;
}

std::optional<double> medianSeconds(const BenchResults& results, const std::string& name) {
  auto found = results.runs.find(name);
  if (found == results.runs.end()) return std::nullopt;
  std::vector<double> values;
  for (const auto& [index, repetition] : found->second) values.push_back(repetition.seconds);
  return median(values);
}

std::optional<double> medianCounter(const BenchResults& results, const std::string& name,
                                    const std::string& counter) {
  auto found = results.runs.find(name);
  if (found == results.runs.end()) return std::nullopt;
  std::vector<double> values;
  for (const auto& [index, repetition] : found->second) {
    auto value = repetition.counters.find(counter);
    if (value != repetition.counters.end()) values.push_back(value->second);
  }
  return median(values);
}

std::optional<double> pairedRatio(const BenchResults& results, const std::string& value,
                                  const std::string& baseline) {
  auto values = results.runs.find(value);
  auto baselines = results.runs.find(baseline);
  if (values == results.runs.end() || baselines == results.runs.end()) return std::nullopt;
  std::vector<double> ratios;
  for (const auto& [index, repetition] : values->second) {
    auto pair = baselines->second.find(index);
    if (pair != baselines->second.end() && pair->second.seconds > 0) {
      ratios.push_back(repetition.seconds / pair->second.seconds);
    }
  }
  return median(ratios);
}

}  // namespace hushwall::bench
