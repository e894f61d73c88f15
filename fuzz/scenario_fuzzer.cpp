// The simulator's scenario loader over arbitrary bytes, as it reads a file.
// A scenario that cannot be played (not JSON, nested too deeply, ...) must be
// refused with a ScenarioError naming what is wrong, never with another
// exception or a crash, and one that is accepted must be playable: steps
// numbered from 1 in file order, each of a known kind, and every value that
// goes into the device (settings, bulletin contexts, badges, stanza media)
// convertible to host values and back.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "fuzz/fuzz_check.h"
#include "sim/json_values.h"
#include "sim/scenario.h"

namespace {

using nlohmann::json;
using namespace hushwall;

// Whole numbers, strings, booleans and containers survive the trip into the
// device and back unchanged; reals may come back as the same number written
// otherwise, so only their kind is compared.
void checkRoundTrip(const json& given) {
  const json back = sim::jsonFromValue(sim::valueFromJson(given));
  if (given.is_number_float()) {
    HUSHWALL_FUZZ_CHECK(back.is_number(), "a real did not come back as a number");
  } else if (given.is_structured()) {
    HUSHWALL_FUZZ_CHECK(back.size() == given.size(), "a container changed size on its way back");
  } else if (!given.is_number_unsigned() || given.get<std::uint64_t>() <= INT64_MAX) {
    HUSHWALL_FUZZ_CHECK(back == given, "a plain value changed on its way into the device and back");
  }
}

void checkPlayable(const sim::Scenario& scenario) {
  int expected = 0;
  for (const sim::Step& step : scenario.steps) {
    HUSHWALL_FUZZ_CHECK(step.number == ++expected, "steps are not numbered from 1 in order");
    HUSHWALL_FUZZ_CHECK(step.body.is_object() && step.body["do"] == step.kind,
                        "a step's kind is not the one written");
    HUSHWALL_FUZZ_CHECK(sim::stepName(step).find(step.kind) != std::string::npos,
                        "a step's name does not name its kind");
    if (step.kind == "settings") checkRoundTrip(step.body["values"]);
    if (step.kind == "bulletin") checkRoundTrip(step.body["bulletin"]);
    if (step.kind == "badge") checkRoundTrip(step.body["value"]);
    if (step.kind == "incoming") {
      for (const json& stanza : step.body["stanzas"]) {
        if (!stanza.contains("media")) continue;
        auto bytes = sim::decodeBase64(stanza["media"].get<std::string>());
        HUSHWALL_FUZZ_CHECK(bytes.has_value(), "accepted media that is not base64");
        HUSHWALL_FUZZ_CHECK(sim::decodeBase64(sim::encodeBase64(*bytes)) == bytes,
                            "media bytes do not survive base64 and back");
      }
    }
  }
  if (scenario.settings) checkRoundTrip(*scenario.settings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  try {
    checkPlayable(sim::parseScenarioText(
        std::string_view(reinterpret_cast<const char*>(data), size)));
  } catch (const sim::ScenarioError& refused) {
    HUSHWALL_FUZZ_CHECK(std::string(refused.what()).find(": ") != std::string::npos,
                        "a refusal does not say where the fault is");
  }
  return 0;
}
