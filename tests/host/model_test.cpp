// Models: their own training rows, files that travel, damage.
#include <studystats/host.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

namespace studystats {
namespace {

std::string sourceFile(const std::string& name) { return std::string(STUDYSTATS_SOURCE_DIR) + "/" + name; }
Table example(const std::string& name) { return readTable(sourceFile("examples/" + name), {.asText = {"cultivar"}}); }

// A model that went through a file.
Model travelled(const Model& model) { return Model::parse(model.json(), "model.json"); }

// A file in the system's folder for such, gone at the end.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content)
      : path_(std::filesystem::temp_directory_path() /
              ("studystats-model-test-" + std::to_string(::getpid()) + ".csv")) {
    std::ofstream(path_, std::ios::binary) << content;
  }
  ~TemporaryFile() { std::filesystem::remove(path_); }
  std::string path() const { return path_.string(); }

 private:
  std::filesystem::path path_;
};

// Prepared as in training, the coefficients of the prepared descriptors, the sum first: the same bits, whatever was
// made of the columns on the way.
TEST(Model, OfARegressionPredictsItsTrainingRowsToTheBit) {
  const std::vector<DataOptions> preparations{
      {},
      {.scaling = Scaling::None},
      {.scaling = Scaling::Range,
       .transforms = {{"clogp", Transform::Kind::Square, 0.5}, {"tpsa", Transform::Kind::Log10, 1}},
       .derivations = {{Derivation::Kind::Quadratic, {"clogp", "polar_area", "tpsa"}}}}};
  for (const DataOptions& data : preparations) {
    const Table table = example("bloodbrain.csv");
    const Regression result = regress(table, {.response = "logBBB", .maxSteps = 14, .data = data});
    const std::vector<Prediction> predictions = travelled(result.model).predict(table);
    ASSERT_EQ(predictions.size(), 208u);
    for (std::size_t i = 0; i < predictions.size(); ++i) {
      EXPECT_EQ(predictions[i].values[0], result.rows[i].fitted) << i;
      EXPECT_NEAR(*predictions[i].leverage, result.rows[i].leverage, 1e-12);
      EXPECT_EQ(predictions[i].inDomain(), result.rows[i].leverage <= result.leverageLimit);
    }
  }
}

// What a spreadsheet would make of the file.
TEST(Model, HoldsItsEquationInTableUnits) {
  const Table table = example("oliveoil.csv");
  const auto column = [&](const std::string& name) -> const std::vector<double>& {
    return std::find_if(table.columns.begin(), table.columns.end(),
                        [&](const TableColumn& one) { return one.name == name; })
        ->numbers;
  };
  const auto expectFitted = [&](const nlohmann::json& model, const nlohmann::json& equation, const auto& fitted) {
    for (std::size_t i = 0; i < 16; ++i) {
      double value = equation["constant"];
      for (std::size_t j = 0; j < model["descriptors"].size(); ++j)
        value += equation["coefficients"][j].get<double>() * column(model["descriptors"][j]["name"])[i];
      EXPECT_NEAR(value, fitted(i), 1e-9);
    }
  };
  const Regression regression = regress(table, {.response = "yellow"});
  const auto mlr = nlohmann::json::parse(travelled(regression.model).json());
  expectFitted(mlr, mlr["regression"]["in_table_units"], [&](std::size_t i) { return regression.rows[i].fitted; });
  const PartialLeastSquares components = partialLeastSquares(table, {.responses = {"yellow", "syrup"}});
  const auto pls = nlohmann::json::parse(travelled(components.model).json());
  for (std::size_t k = 0; k < 2; ++k)
    expectFitted(pls, pls["pls"][k]["in_table_units"], [&](std::size_t i) { return components.rows[i].fitted[k]; });
}

TEST(Model, OfComponentsPlacesItsTrainingRowsToTheBit) {
  const Table table = example("wine.csv");
  const PrincipalComponents result = principalComponents(table, {.components = 4, .classColumn = "cultivar"});
  const std::vector<Prediction> predictions = travelled(result.model).predict(table);
  for (std::size_t i = 0; i < predictions.size(); ++i) {
    EXPECT_EQ(predictions[i].scores, result.rows[i].scores) << i;
    EXPECT_NEAR(*predictions[i].t2, result.rows[i].t2, 1e-9);
    EXPECT_NEAR(*predictions[i].q, result.rows[i].q, 1e-9);
    EXPECT_EQ(predictions[i].inDomain(), result.rows[i].t2 <= *result.t2Limit && result.rows[i].q <= *result.qLimit);
  }
}

TEST(Model, OfPartialLeastSquaresPredictsItsTrainingRows) {
  for (const Scaling scaling : {Scaling::Autoscale, Scaling::Centre, Scaling::Range}) {
    const Table table = example("oliveoil.csv");
    PartialLeastSquaresOptions options{.responses = {"yellow", "syrup"}, .components = 4, .data = {.scaling = scaling}};
    options.choice = {.kind = ComponentChoice::Kind::Number, .number = 3};
    const PartialLeastSquares result = partialLeastSquares(table, options);
    const Model model = travelled(result.model);
    const std::vector<Prediction> predictions = model.predict(table);
    for (std::size_t i = 0; i < predictions.size(); ++i)
      for (std::size_t k = 0; k < 2; ++k)
        EXPECT_NEAR(predictions[i].values[k], result.rows[i].fitted[k], 1e-10 * result.responses[k].sd);
    // Another number of components is that analysis's model.
    options.choice.number = 2;
    const PartialLeastSquares two = partialLeastSquares(table, options);
    const std::vector<Prediction> byTwo = model.withComponents(2).predict(table);
    for (std::size_t i = 0; i < byTwo.size(); ++i) {
      EXPECT_NEAR(byTwo[i].values[1], two.rows[i].fitted[1], 1e-10 * two.responses[1].sd);
      EXPECT_NEAR(*byTwo[i].q, two.rows[i].q, 1e-9 * (1 + two.rows[i].q));
    }
    EXPECT_THROW(model.withComponents(5), BadOptions);
  }
}

TEST(Model, OfDiscriminantAnalysisFindsTheSameClasses) {
  for (const int descriptors : {1, 4}) {
    const Table table = example("wine.csv");
    DiscriminantOptions options{.classColumn = "cultivar", .priors = {Priors::Kind::Size}};
    options.selection = {ClassSelection::Kind::Number, descriptors};
    const Discriminant result = discriminate(table, options);
    const std::vector<Prediction> predictions = travelled(result.model).predict(table);
    for (std::size_t i = 0; i < predictions.size(); ++i) {
      EXPECT_EQ(predictions[i].predictedClass, result.rows[i].predicted);
      for (std::size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(predictions[i].distances[c], result.rows[i].distances[c], 1e-6);
        EXPECT_NEAR(predictions[i].posteriors[c], result.rows[i].posteriors[c], 1e-9);
      }
    }
  }
}

// t(0.975; 10) = 2.228139 (any table of Student's t), the cross-validated error, and the leverage of R's hatvalues.
TEST(Model, HalfWidthsComeFromTheCrossValidatedError) {
  const Table table = example("cement.csv");
  const Regression result = regress(table, {.response = "y", .corrLimit = 1, .folds = Folds::leaveOneOut()});
  const Prediction first = result.model.predict(table)[0];
  const double error = std::sqrt(149.10 / 13);  // the published PRESS of the whole selection
  EXPECT_NEAR(*first.halfWidths[0], 2.228139 * error * std::sqrt(1 + 0.251193306987), 5e-3);
  EXPECT_NEAR(*result.model.fittedHalfWidth(first), 2.228139 * 2.40633503852 * std::sqrt(1 + 0.251193306987), 1e-5);
}

// Files of the first version that wrote them must open in every later one. Expected: cement by R's coefficients of
// lm(y ~ x1 + x2); iris by MASS::lda, where flower 84 falls to virginica.
TEST(Model, OfEveryKindOpensAsItWasWritten) {
  const std::string folder = sourceFile("tests/data/models/");
  const Prediction cement = Model::load(folder + "mlr.json").predict(example("cement.csv"))[2];
  EXPECT_NEAR(cement.values[0], 52.5773488821 + 1.46830574222 * 11 + 0.662250491275 * 56, 1e-8);
  const std::vector<Prediction> iris = Model::load(folder + "da.json").predict(example("iris.csv"));
  EXPECT_EQ(iris[83].predictedClass, "virginica");
  EXPECT_EQ(iris[0].predictedClass, "setosa");
  EXPECT_EQ(Model::load(folder + "pca.json").predict(example("iris.csv")).size(), 150u);
  EXPECT_EQ(Model::load(folder + "pls.json").responses(), (std::vector<std::string>{"yellow", "green"}));
  for (const char* kind : {"mlr", "pca", "pls", "da"}) {
    std::ifstream file(folder + kind + ".json");
    std::stringstream text;
    text << file.rdbuf();
    EXPECT_EQ(Model::parse(text.str(), kind).json(), text.str()) << "every number reads back the same";
  }
}

std::string sentence(const std::string& json) {
  try {
    Model::parse(json, "m.json");
  } catch (const BadTable& error) {
    return error.what();
  }
  return "nothing was thrown";
}

TEST(Model, ThatIsDamagedIsRefusedInWords) {
  const std::string good = regress(example("cement.csv"), {.response = "y"}).model.json();
  const auto with = [&](const std::string& from, const std::string& to) {
    std::string changed = good;
    changed.replace(changed.find(from), from.size(), to);
    return sentence(changed);
  };
  EXPECT_NE(sentence("").find("m.json, line 1: this is no JSON"), std::string::npos);
  EXPECT_NE(sentence("{}").find("\"schema\" is missing"), std::string::npos);
  EXPECT_NE(with("studystats.model/1", "studystats.model/2").find("written by a later version"), std::string::npos);
  EXPECT_NE(with("studystats.model/1", "studystats.mlr/1").find("is no model"), std::string::npos);
  EXPECT_NE(with("\"mlr\"", "\"mlx\"").find("\"kind\" is \"mlx\""), std::string::npos);
  EXPECT_NE(with("\"intercept\": ", "\"intercept\": \"x\", \"was\": ").find("\"regression.intercept\" is not a number"),
            std::string::npos);
  EXPECT_NE(with("\"coefficients\": [", "\"coefficients\": [1,").find("\"regression.coefficients\" has"),
            std::string::npos);
}

// Bytes changed, dropped and doubled at random places: an error or a model, never anything else.
TEST(Model, SurvivesMutation) {
  std::vector<std::string> files;
  for (const char* kind : {"mlr", "pca", "pls", "da"}) {
    std::ifstream file(sourceFile(std::string("tests/data/models/") + kind + ".json"));
    std::stringstream text;
    text << file.rdbuf();
    files.push_back(text.str());
  }
  std::mt19937 draw(20);
  const auto below = [&](std::size_t n) { return static_cast<std::size_t>(draw()) % n; };
  const std::string bytes = "0123456789-+eE.,:[]{}\"ntx \n\xff";
  std::size_t refused = 0;
  for (int mutation = 0; mutation < 800; ++mutation) {
    std::string text = files[static_cast<std::size_t>(mutation) % files.size()];
    for (std::size_t times = 1 + below(3); times > 0; --times) {
      const std::size_t at = below(text.size());
      switch (below(4)) {
        case 0:
          text[at] = bytes[below(bytes.size())];
          break;
        case 1:
          text.erase(at, 1 + below(40));
          break;
        case 2:
          text.insert(at, text.substr(below(text.size()), 1 + below(40)));
          break;
        default:
          text.resize(at);
      }
      if (text.empty()) break;
    }
    try {
      const Model model = Model::parse(text, "m.json");
      const std::vector<double> values(model.columns().size(), 1.5);
      model.predict(values);
    } catch (const BadTable& error) {
      ++refused;
      EXPECT_EQ(std::string(error.what()).find("m.json"), 0u) << error.what();
    }
  }
  EXPECT_GT(refused, 400u);
}

// Column order, pieces of a megabyte, and line ends do not matter.
TEST(PredictFile, GivesWhatTheTableInMemoryGives) {
  const Regression result = regress(example("cement.csv"), {.response = "y", .corrLimit = 1});
  for (const char* end : {"\n", "\r\n", "\r"}) {
    std::string text = "note,x2,y,x4,x3,x1,name" + std::string(end);
    std::mt19937 draw(3);
    const auto cell = [&] { return std::to_string(static_cast<double>(draw() % 100000) / 1000); };
    for (int i = 0; i < 40000; ++i)
      text += "\"a, " + std::to_string(i) + "\"," + cell() + "," + (i % 5 == 0 ? "" : cell()) + "," + cell() + "," +
              cell() + "," + (i % 1000 == 7 ? "NA" : cell()) + ",row " + std::to_string(i) + end;
    const TemporaryFile file(text);
    const std::vector<Prediction> expected = result.model.predict(parseTable(text, "t.csv"));
    std::size_t i = 0;
    const Predictions predicted =
        predictFile(result.model, "m.json", file.path(), {.id = "name"}, [&](const PredictedRow& row) {
          ASSERT_LT(i, expected.size());
          EXPECT_EQ(row.prediction.row, "row " + std::to_string(i));
          EXPECT_EQ(row.prediction.values, expected[i].values);
          EXPECT_EQ(row.prediction.missing.has_value(), i % 1000 == 7);
          EXPECT_TRUE(!row.prediction.missing || !row.prediction.inDomain());
          EXPECT_EQ(row.observed[0].has_value(), i % 5 != 0);
          ++i;
        });
    EXPECT_EQ(i, 40000u);
    EXPECT_EQ(predicted.rows, 40000u);
    EXPECT_EQ(predicted.missing, 40u);
    EXPECT_EQ(predicted.first.size(), 12u);
    ASSERT_EQ(predicted.errors.size(), 1u);
    EXPECT_EQ(predicted.errors[0].rows, 40000u - 8000 - 40) << "without a response; without a prediction";
  }
}

TEST(PredictFile, NamesWhatItCannotUse) {
  const Model model = regress(example("cement.csv"), {.response = "y", .corrLimit = 1}).model;
  const auto told = [&](const std::string& text, const PredictOptions& options = {}) {
    const TemporaryFile file(text);
    try {
      predictFile(model, "m.json", file.path(), options);
    } catch (const Error& error) {
      return std::string(error.what());
    }
    return std::string("nothing was thrown");
  };
  EXPECT_NE(told("x1,z2\n1,2\n").find("has no column \"x2\"; the model needs it."), std::string::npos);
  EXPECT_NE(told("x1,x2\n1,2\n3,abc\n").find("line 3, column 2 (x2): \"abc\" is not a number"), std::string::npos);
  EXPECT_NE(told("x1,x2,y\n1,2,3\n3,2,1e99\n").find("line 3, column 3 (y): \"1e99\" is out of range"),
            std::string::npos);
  EXPECT_NE(told("x1,x2\n1,2\n3\n").find("line 3: 1 cell where the heading has 2"), std::string::npos);
  EXPECT_NE(told("x1,x2\n").find("a heading but no rows"), std::string::npos);
  EXPECT_NE(told("x1,x2\n1,2\n", {.observed = "yy"}).find("has no column \"yy\""), std::string::npos);
  EXPECT_EQ(told("x1,x2\n1,2\n"), "nothing was thrown");
}

}  // namespace
}  // namespace studystats
