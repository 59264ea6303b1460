// Every function and operator of the dialect over arguments made from any bytes: a value or a jet::Error.

#include "input_bytes.h"
#include "jet/error.h"
#include "jet/operators.h"

namespace {

jet::Value anyValue(InputBytes& bytes) {
  switch (bytes.between(0, 6)) {
    case 0:
      return {};
    case 1:
      return bytes.yes();
    case 2:
      return bytes.number<std::int64_t>();
    case 3:
      return bytes.between(-50, 50);
    case 4:
      return bytes.number<double>();
    case 5: {
      const auto date = base::DateTime::fromSerial(bytes.realBetween(-660000.0, 2960000.0));
      return date ? jet::Value(*date) : jet::Value();
    }
    default:
      return bytes.text(40);
  }
}

void callFunction(InputBytes& bytes) {
  const auto& all = jet::functions();
  const jet::Function& function = all[bytes.number<std::uint16_t>() % all.size()];
  std::vector<jet::Value> arguments;
  const std::int64_t count = bytes.between(function.minArguments, function.maxArguments);
  while (static_cast<std::int64_t>(arguments.size()) < count) arguments.push_back(anyValue(bytes));
  static_cast<void>(function.call(arguments).toText());
}

void applyOperator(InputBytes& bytes) {
  constexpr int first = static_cast<int>(jet::Operator::Power);
  constexpr int last = static_cast<int>(jet::Operator::Imp);
  const auto op = static_cast<jet::Operator>(bytes.between(first, last));
  const jet::Value left = anyValue(bytes);
  static_cast<void>(jet::apply(op, left, anyValue(bytes)).toText());
  static_cast<void>(jet::apply(jet::Operator::Negate, left).toText());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  InputBytes bytes(data, size);
  try {
    if (bytes.yes()) {
      callFunction(bytes);
    } else {
      applyOperator(bytes);
    }
  } catch (const jet::Error&) {
  }
  return 0;
}
