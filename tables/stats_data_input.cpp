#include <studystats/tables.h>

#include "tables/row_names.h"

using studystats::core::copyNames;

namespace {

// 32-bit signed arithmetic that wraps: formed without a sign, read with one.
std::int32_t product(std::uint32_t a, std::uint32_t b) { return std::int32_t(a * b); }
std::int32_t product(std::uint32_t a, std::uint32_t b, std::uint32_t c) { return std::int32_t(a * b * c); }
void addTo(std::int32_t& count, std::int32_t term) { count = std::int32_t(std::uint32_t(count) + std::uint32_t(term)); }

}  // namespace

StatsDataInput::StatsDataInput(const std::string& gridGUID, std::int32_t sheet, const std::vector<std::string>& columns)
    : StatsDataInput(gridGUID, sheet, columns, {}) {}

StatsDataInput::StatsDataInput(const std::string& gridGUID, std::int32_t sheet, const std::vector<std::string>& columns,
                               const std::vector<std::string>& rows)
    : gridGUID_(gridGUID), sheet_(sheet), columns_(columns), rows_(rows) {}

StatsDataInput::StatsDataInput(const StatsDataInput&) = default;
StatsDataInput::StatsDataInput(StatsDataInput&&) noexcept = default;
StatsDataInput& StatsDataInput::operator=(const StatsDataInput& other) { return *this = StatsDataInput(other); }
StatsDataInput& StatsDataInput::operator=(StatsDataInput&&) noexcept = default;
StatsDataInput::~StatsDataInput() = default;
StatsDataInput* StatsDataInput::Copy() const { return new StatsDataInput(*this); }

std::string StatsDataInput::GetGridGUID() { return gridGUID_; }
std::int32_t StatsDataInput::GetSheet() const { return sheet_; }
void StatsDataInput::GetColumns(std::vector<std::string>* out) const { copyNames(columns_, out, "GetColumns"); }
void StatsDataInput::GetRows(std::vector<std::string>* out) const { copyNames(rows_, out, "GetRows"); }

void StatsDataInput::SetBehavior(bool first, bool second, BadItemBehavior badItems, DataArrayType arrayType) {
  firstBehaviorFlag_ = first;
  secondBehaviorFlag_ = second;
  badItemBehavior_ = badItems;
  arrayType_ = arrayType;
}

void StatsDataInput::GetBehavior(bool& first, bool& second, BadItemBehavior& badItems, DataArrayType& arrayType) const {
  first = firstBehaviorFlag_;
  second = secondBehaviorFlag_;
  badItems = badItemBehavior_;
  arrayType = arrayType_;
}

StatsDataInput::DataArrayType StatsDataInput::GetArrayType() { return arrayType_; }
void StatsDataInput::SetDefaultValue(double value) { defaultValue_ = value; }
double StatsDataInput::GetDefaultValue() const { return defaultValue_; }

void StatsDataInput::SetDerivationType(DataInputDerivation type, std::int32_t parameter) {
  derivationType_ = type;
  derivationParameter_ = parameter;
}

void StatsDataInput::GetDerivationType(DataInputDerivation& type, std::int32_t& parameter) const {
  type = derivationType_;
  parameter = derivationParameter_;
}

void StatsDataInput::GetDerivationParameters(DataInputDerivation type, std::int32_t n, bool& squares, bool& cubes,
                                             bool& crossProducts, bool& squareCrossProducts, bool& tripleProducts,
                                             std::int32_t& count) {
  const bool all = type == DerivationCubic;
  squares = all || type == DerivationSquares || type == DerivationQuadratic;
  cubes = all || type == DerivationCubes;
  crossProducts = all || type == DerivationCrossProducts || type == DerivationQuadratic;
  squareCrossProducts = all;
  tripleProducts = all;

  const auto m = std::uint32_t(n);
  count = 0;
  if (squares) addTo(count, n);
  if (cubes) addTo(count, n);
  if (crossProducts) addTo(count, product(m - 1, m) / 2);
  if (squareCrossProducts) addTo(count, product(m - 1, m));
  if (tripleProducts) addTo(count, product(m - 2, m - 1, m) / 6);
}
