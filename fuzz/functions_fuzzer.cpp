// Every function and operator of the dialect over arguments made from any bytes: a value or a jet::Error.

#include <fuzzer/FuzzedDataProvider.h>

#include "jet/error.h"
#include "jet/operators.h"

namespace {

jet::Value anyValue(FuzzedDataProvider& bytes) {
  switch (bytes.ConsumeIntegralInRange(0, 6)) {
    case 0:
      return {};
    case 1:
      return bytes.ConsumeBool();
    case 2:
      return bytes.ConsumeIntegral<std::int64_t>();
    case 3:
      return bytes.ConsumeIntegralInRange(-50, 50);
    case 4:
      return bytes.ConsumeFloatingPoint<double>();
    case 5: {
      const auto date = base::DateTime::fromSerial(bytes.ConsumeFloatingPointInRange<double>(-660000, 2960000));
      return date ? jet::Value(*date) : jet::Value();
    }
    default:
      return bytes.ConsumeRandomLengthString(40);
  }
}

void callFunction(FuzzedDataProvider& bytes) {
  const auto& all = jet::functions();
  const jet::Function& function = all[bytes.ConsumeIntegralInRange<std::size_t>(0, all.size() - 1)];
  std::vector<jet::Value> arguments;
  const int count = bytes.ConsumeIntegralInRange(function.minArguments, function.maxArguments);
  while (static_cast<int>(arguments.size()) < count) arguments.push_back(anyValue(bytes));
  function.call(arguments).toText();
}

void applyOperator(FuzzedDataProvider& bytes) {
  constexpr int first = static_cast<int>(jet::Operator::Power);
  constexpr int last = static_cast<int>(jet::Operator::Imp);
  const auto op = static_cast<jet::Operator>(bytes.ConsumeIntegralInRange(first, last));
  const jet::Value left = anyValue(bytes);
  jet::apply(op, left, anyValue(bytes)).toText();
  jet::apply(jet::Operator::Negate, left).toText();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  try {
    if (bytes.ConsumeBool()) {
      callFunction(bytes);
    } else {
      applyOperator(bytes);
    }
  } catch (const jet::Error&) {
  }
  return 0;
}
