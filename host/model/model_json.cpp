// A model as JSON, and back: every part is checked before it is believed.
#include "host/json.h"
#include "host/model/model_data.h"
#include "host/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace studystats {
namespace {

constexpr const char* kSchema = "studystats.model/1";

constexpr struct {
  Model::Kind kind;
  const char* name;
} kKinds[] = {{Model::Kind::PrincipalComponents, "pca"},
              {Model::Kind::Regression, "mlr"},
              {Model::Kind::PartialLeastSquares, "pls"},
              {Model::Kind::Discriminant, "da"}};

constexpr struct {
  Transform::Kind kind;
  const char* name;
} kTransforms[] = {{Transform::Kind::Ln, "ln"},
                   {Transform::Kind::Log10, "log10"},
                   {Transform::Kind::Sqrt, "sqrt"},
                   {Transform::Kind::Square, "square"},
                   {Transform::Kind::Cube, "cube"},
                   {Transform::Kind::Exp, "exp"},
                   {Transform::Kind::Reciprocal, "reciprocal"}};

template <class Names, class Kind>
const char* nameIn(const Names& names, Kind kind) {
  for (const auto& known : names)
    if (known.kind == kind) return known.name;
  return "";
}

Json gridJson(const Grid& grid) {
  return {{"rows", grid.rows}, {"columns", grid.columns}, {"by_column", jsonNumbers(grid.values)}};
}

Json descriptorJson(const ModelDescriptor& descriptor) {
  Json factors = Json::array();
  for (const DescriptorRecipe::Factor& factor : descriptor.recipe.factors) {
    Json transforms = Json::array();
    for (const Transform& transform : factor.transforms)
      transforms.push_back({{"kind", nameIn(kTransforms, transform.kind)}, {"shift", jsonNumber(transform.shift)}});
    factors.push_back({{"column", factor.column}, {"transforms", std::move(transforms)}});
  }
  return {{"name", descriptor.name},
          {"factors", std::move(factors)},
          {"shift", jsonNumber(descriptor.shift)},
          {"scale", jsonNumber(descriptor.scale)}};
}

void addTableUnits(Json& json, const std::optional<TableEquation>& equation) {
  if (equation)
    json["in_table_units"] = {{"constant", jsonNumber(equation->constant)},
                              {"coefficients", jsonNumbers(equation->coefficients)}};
}

Json regressionJson(const RegressionModel& model) {
  Json json{{"stepwise", model.stepwise},
            {"intercept", jsonNumber(model.intercept)},
            {"coefficients", jsonNumbers(model.coefficients)},
            {"equation", model.equation},
            {"r2", jsonNumber(model.r2)},
            {"s", jsonNumber(model.s)},
            {"rmse", jsonNumber(model.rmse)},
            {"df_residual", model.dfResidual},
            {"q2", jsonNumber(model.q2)},
            {"rmse_cross_validated", jsonNumber(model.crossValidatedRmse)},
            {"means", jsonNumbers(model.means)},
            {"sds", jsonNumbers(model.sds)},
            {"axes", gridJson(model.axes)},
            {"leverage_limit", jsonNumber(model.leverageLimit)}};
  addTableUnits(json, model.inTableUnits);
  return json;
}

Json planeJson(const PlaneModel& plane) {
  return {{"centre", jsonNumbers(plane.centre)},          {"rotations", gridJson(plane.rotations)},
          {"offsets", jsonNumbers(plane.offsets)},        {"loadings", gridJson(plane.loadings)},
          {"variances", jsonNumbers(plane.variances)},    {"q_means", jsonNumbers(plane.qMeans)},
          {"q_variances", jsonNumbers(plane.qVariances)}, {"explained", jsonNumbers(plane.explained)}};
}

Json responseJson(const PlsModelResponse& response) {
  Json json{{"mean", jsonNumber(response.mean)},
            {"scale", jsonNumber(response.scale)},
            {"coefficients", gridJson(response.coefficients)},
            {"r2", jsonNumbers(response.r2)},
            {"q2", jsonNumbers(response.q2)},
            {"rmse", jsonNumbers(response.rmse)},
            {"rmse_cross_validated", jsonNumbers(response.crossValidatedRmse)}};
  addTableUnits(json, response.inTableUnits);
  return json;
}

Json discriminantJson(const DiscriminantModel& model) {
  return {{"classes", model.classes},
          {"priors", jsonNumbers(model.priors)},
          {"class_means", gridJson(model.space.classMeans)},
          {"grand_mean", jsonNumbers(model.space.grandMean)},
          {"whitening", gridJson(model.space.whitening)},
          {"vectors", gridJson(model.space.vectors)},
          {"eigenvalues", jsonNumbers(model.space.eigenvalues)},
          {"fitted_correct", jsonNumber(model.fitted)},
          {"cross_validated_correct", jsonNumber(model.crossValidated)}};
}

// One part of a model file, with the way to it for messages: "regression.coefficients".
class Part {
 public:
  Part(const Json& json, const std::string& file, std::string path)
      : json_(json), file_(file), path_(std::move(path)) {}

  [[noreturn]] void refuse(const std::string& what) const {
    throw BadTable(fmt::format("{}: \"{}\" {}. The model file is damaged, or not one of this program's.", file_,
                               path_.empty() ? "the whole" : path_, what),
                   {.file = file_});
  }
  Part operator[](const std::string& key) const {
    if (!json_.is_object()) refuse("is not an object");
    const auto it = json_.find(key);
    if (it == json_.end()) Part(json_, file_, below(key)).refuse("is missing");
    return {*it, file_, below(key)};
  }
  std::vector<Part> items(std::size_t most) const {
    if (!json_.is_array()) refuse("is not a list");
    if (json_.size() > most) refuse(fmt::format("has {} entries, more than {}", json_.size(), most));
    std::vector<Part> parts;
    for (std::size_t i = 0; i < json_.size(); ++i) parts.emplace_back(json_[i], file_, fmt::format("{}[{}]", path_, i));
    return parts;
  }
  std::optional<Part> find(const std::string& key) const {
    return json_.is_object() && json_.contains(key) ? std::optional<Part>((*this)[key]) : std::nullopt;
  }
  bool isNull() const { return json_.is_null(); }
  double number() const {
    if (!json_.is_number()) refuse("is not a number");
    const double value = json_.get<double>();
    if (!std::isfinite(value)) refuse("is too large for a number");
    return value;
  }
  double positive() const {
    const double value = number();
    if (!(value > 0)) refuse("is not above 0");
    return value;
  }
  double notNegative() const {
    const double value = number();
    if (!(value >= 0)) refuse("is below 0");
    return value;
  }
  std::optional<double> numberOrNull() const { return isNull() ? std::nullopt : std::optional<double>(number()); }
  std::size_t count(std::size_t least, std::size_t most) const {
    if (!json_.is_number_integer() && !json_.is_number_unsigned()) refuse("is not a whole number");
    const auto value = json_.get<std::int64_t>();
    if (value < 0 || static_cast<std::uint64_t>(value) < least || static_cast<std::uint64_t>(value) > most)
      refuse(fmt::format("is not between {} and {}", least, most));
    return static_cast<std::size_t>(value);
  }
  bool flag() const {
    if (!json_.is_boolean()) refuse("is neither true nor false");
    return json_.get<bool>();
  }
  std::string text() const {
    if (!json_.is_string()) refuse("is not a text");
    return json_.get<std::string>();
  }
  std::vector<double> numbers(std::size_t size) const {
    const std::vector<Part> parts = items(size);
    if (parts.size() != size) refuse(fmt::format("has {} numbers, not {}", parts.size(), size));
    std::vector<double> values;
    for (const Part& part : parts) values.push_back(part.number());
    return values;
  }
  Grid grid(std::size_t rows, std::size_t columns) const {
    (*this)["rows"].count(rows, rows);
    (*this)["columns"].count(columns, columns);
    return {rows, columns, (*this)["by_column"].numbers(rows * columns)};
  }

 private:
  std::string below(const std::string& key) const { return path_.empty() ? key : path_ + "." + key; }

  const Json& json_;
  const std::string& file_;
  std::string path_;
};

template <class Names>
auto kindIn(const Names& names, const Part& part) {
  const std::string text = part.text();
  for (const auto& known : names)
    if (text == known.name) return known.kind;
  part.refuse(fmt::format("is \"{}\", which this version does not know", text.substr(0, 40)));
}

constexpr std::size_t kMost = 10'000'000;  // entries of any list

ModelDescriptor descriptorOf(const Part& part) {
  ModelDescriptor descriptor;
  descriptor.name = part["name"].text();
  for (const Part& factor : part["factors"].items(100)) {
    DescriptorRecipe::Factor one{factor["column"].text(), {}};
    for (const Part& transform : factor["transforms"].items(100))
      one.transforms.push_back({one.column, kindIn(kTransforms, transform["kind"]), transform["shift"].number()});
    descriptor.recipe.factors.push_back(std::move(one));
  }
  if (descriptor.recipe.factors.empty()) part.refuse("is made of no column");
  descriptor.shift = part["shift"].number();
  descriptor.scale = part["scale"].number();
  if (descriptor.scale == 0) part["scale"].refuse("is 0");
  return descriptor;
}

// Absent from files of the first versions.
std::optional<TableEquation> tableEquationOf(const Part& part, std::size_t k) {
  const std::optional<Part> equation = part.find("in_table_units");
  if (!equation) return std::nullopt;
  return TableEquation{(*equation)["constant"].number(), (*equation)["coefficients"].numbers(k)};
}

RegressionModel regressionOf(const Part& part, std::size_t k) {
  RegressionModel model;
  model.stepwise = part["stepwise"].flag();
  model.intercept = part["intercept"].number();
  model.coefficients = part["coefficients"].numbers(k);
  model.equation = part["equation"].text();
  model.r2 = part["r2"].number();
  model.s = part["s"].notNegative();
  model.rmse = part["rmse"].notNegative();
  model.dfResidual = static_cast<int>(part["df_residual"].count(0, kMost));
  model.q2 = part["q2"].numberOrNull();
  model.crossValidatedRmse = part["rmse_cross_validated"].numberOrNull();
  model.means = part["means"].numbers(k);
  model.sds = part["sds"].numbers(k);
  if (std::any_of(model.sds.begin(), model.sds.end(), [](double sd) { return !(sd > 0); }))
    part["sds"].refuse("has an entry that is not above 0");
  model.axes = part["axes"].grid(k, k);
  model.leverageLimit = part["leverage_limit"].positive();
  model.inTableUnits = tableEquationOf(part, k);
  return model;
}

PlaneModel planeOf(const Part& part, std::size_t p) {
  PlaneModel plane;
  plane.centre = part["centre"].numbers(p);
  const std::size_t components = part["rotations"]["columns"].count(0, kMost);
  plane.rotations = part["rotations"].grid(p, components);
  plane.offsets = part["offsets"].numbers(components);
  plane.loadings = part["loadings"].grid(p, components);
  plane.variances = part["variances"].numbers(components);
  plane.qMeans = part["q_means"].numbers(components);
  plane.qVariances = part["q_variances"].numbers(components);
  plane.explained = part["explained"].numbers(components);
  return plane;
}

PlsModelResponse responseOf(const Part& part, std::size_t p, std::size_t components) {
  PlsModelResponse response;
  response.mean = part["mean"].number();
  response.scale = part["scale"].positive();
  response.coefficients = part["coefficients"].grid(p, components);
  response.r2 = part["r2"].numbers(components);
  response.q2 = part["q2"].numbers(components);
  response.rmse = part["rmse"].numbers(components);
  response.crossValidatedRmse = part["rmse_cross_validated"].numbers(components);
  response.inTableUnits = tableEquationOf(part, p);
  return response;
}

DiscriminantModel discriminantOf(const Part& part, std::size_t m) {
  DiscriminantModel model;
  for (const Part& name : part["classes"].items(kMost)) model.classes.push_back(name.text());
  const std::size_t g = model.classes.size();
  if (g < 2) part["classes"].refuse("has fewer than two names");
  model.priors = part["priors"].numbers(g);
  model.space.classMeans = part["class_means"].grid(g, m);
  model.space.grandMean = part["grand_mean"].numbers(m);
  model.space.whitening = part["whitening"].grid(m, m);
  const std::size_t functions = std::min(m, g - 1);
  model.space.vectors = part["vectors"].grid(m, functions);
  model.space.eigenvalues = part["eigenvalues"].numbers(functions);
  model.fitted = part["fitted_correct"].number();
  model.crossValidated = part["cross_validated_correct"].numberOrNull();
  return model;
}

void checkSchema(const Part& whole, const std::string& name) {
  const std::string schema = whole["schema"].text();
  if (schema == kSchema) return;
  if (schema.starts_with("studystats.model/"))
    throw BadTable(fmt::format("{} was written by a later version of this program ({}); this one reads {}.", name,
                               schema.substr(0, 40), kSchema),
                   {.file = name});
  throw BadTable(fmt::format("{} is no model: its schema is \"{}\". A model is written with --model FILE.", name,
                             schema.substr(0, 40)),
                 {.file = name});
}

}  // namespace

std::string jsonOf(const ModelData& data) {
  Json json{{"schema", kSchema},
            {"kind", nameIn(kKinds, data.kind)},
            {"version", data.version},
            {"table", data.table},
            {"rows", data.rows},
            {"level", jsonNumber(data.level)},
            {"components", data.components},
            {"row_name_column", data.rowNameColumn},
            {"responses", data.responses}};
  json["validation"] = {{"scheme", data.validation.scheme}, {"reason", data.validation.reason}};
  json["descriptors"] = Json::array();
  for (const ModelDescriptor& descriptor : data.descriptors) json["descriptors"].push_back(descriptorJson(descriptor));
  if (data.regression) json["regression"] = regressionJson(*data.regression);
  if (data.plane) json["plane"] = planeJson(*data.plane);
  if (!data.pls.empty()) {
    json["pls"] = Json::array();
    for (const PlsModelResponse& response : data.pls) json["pls"].push_back(responseJson(response));
  }
  if (data.discriminant) json["discriminant"] = discriminantJson(*data.discriminant);
  return jsonText(json);
}

ModelData parsedModel(std::string_view text, const std::string& name) {
  Json json;
  try {
    json = Json::parse(text);
  } catch (const Json::parse_error& error) {
    const std::string_view before = text.substr(0, std::min(text.size(), error.byte));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    throw BadTable(
        fmt::format("{}, line {}: this is no JSON from here on. A model is written with --model FILE.", name, line),
        {.file = name, .line = line});
  } catch (const Json::exception&) {  // a number that no double can hold, for example
    throw BadTable(fmt::format("{}: this JSON holds what cannot be read. The model file is damaged.", name),
                   {.file = name});
  }
  const Part whole(json, name, {});
  checkSchema(whole, name);

  ModelData data;
  data.kind = kindIn(kKinds, whole["kind"]);
  data.version = whole["version"].text();
  data.table = whole["table"].text();
  data.rows = whole["rows"].count(2, std::size_t{1} << 31);
  data.level = whole["level"].positive();
  if (!(data.level < 1)) whole["level"].refuse("is not below 1");
  data.components = whole["components"].count(0, kMost);
  data.rowNameColumn = whole["row_name_column"].text();
  for (const Part& response : whole["responses"].items(kMost)) data.responses.push_back(response.text());
  data.validation = {whole["validation"]["scheme"].text(), whole["validation"]["reason"].text()};
  for (const Part& descriptor : whole["descriptors"].items(kMost)) data.descriptors.push_back(descriptorOf(descriptor));

  const std::size_t p = data.descriptors.size();
  const bool one = data.responses.size() == 1;
  if (data.kind == Model::Kind::Regression) {
    if (!one) whole["responses"].refuse("does not name one column");
    data.regression = regressionOf(whole["regression"], p);
  } else if (data.kind == Model::Kind::Discriminant) {
    if (!one) whole["responses"].refuse("does not name one column");
    data.discriminant = discriminantOf(whole["discriminant"], p);
  } else {
    data.plane = planeOf(whole["plane"], p);
  }
  if (data.kind == Model::Kind::PrincipalComponents && data.components != data.plane->rotations.columns)
    whole["components"].refuse("differs from the columns of the rotations");
  if (data.kind == Model::Kind::PartialLeastSquares) {
    if (data.responses.empty()) whole["responses"].refuse("names no column");
    const std::vector<Part> responses = whole["pls"].items(kMost);
    if (responses.size() != data.responses.size()) whole["pls"].refuse("does not have one entry a response");
    const std::size_t computed = responses.front()["coefficients"]["columns"].count(1, kMost);
    for (const Part& response : responses) data.pls.push_back(responseOf(response, p, computed));
    if (data.components < 1 || data.components > computed) whole["components"].refuse("is not one of those computed");
  }
  try {
    complete(data);
  } catch (const std::exception&) {  // figures for which no distribution has a quantile
    throw BadTable(fmt::format("{}: no limits can be computed from its figures. The model file is damaged.", name),
                   {.file = name});
  }
  return data;
}

}  // namespace studystats
