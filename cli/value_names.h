// The words that stand for a choice, on the command line and in everything printed about it.
#pragma once

#include <studystats/host.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace studystats::cli {

enum class When { Auto, Always, Never, Json };  // Json: of --progress only

template <class Value>
struct Named {
  std::string_view name;
  Value value;
  bool synonym = false;  // accepted, not shown
};

inline constexpr Named<Scaling> kScalings[] = {
    {"autoscale", Scaling::Autoscale}, {"pareto", Scaling::Pareto},       {"range", Scaling::Range},
    {"centre", Scaling::Centre},       {"center", Scaling::Centre, true}, {"none", Scaling::None},
};

inline constexpr Named<Missing::Rule> kMissingRules[] = {
    {"drop-rows", Missing::Rule::DropRows}, {"drop-columns", Missing::Rule::DropColumns},
    {"fill=mean", Missing::Rule::FillMean}, {"fill=median", Missing::Rule::FillMedian},
    {"fill=V", Missing::Rule::FillValue},   {"fail", Missing::Rule::Fail},
};

inline constexpr Named<Transform::Kind> kTransforms[] = {
    {"ln", Transform::Kind::Ln},     {"log", Transform::Kind::Ln, true},          {"log10", Transform::Kind::Log10},
    {"sqrt", Transform::Kind::Sqrt}, {"square", Transform::Kind::Square},         {"cube", Transform::Kind::Cube},
    {"exp", Transform::Kind::Exp},   {"reciprocal", Transform::Kind::Reciprocal},
};

inline constexpr Named<Derivation::Kind> kDerivations[] = {
    {"cross-products", Derivation::Kind::CrossProducts},
    {"squares", Derivation::Kind::Squares},
    {"quadratic", Derivation::Kind::Quadratic},
    {"cubes", Derivation::Kind::Cubes},
    {"cubic", Derivation::Kind::Cubic},
};

inline constexpr Named<Selection> kSelections[] = {{"stepwise", Selection::Stepwise}, {"all", Selection::All}};

inline constexpr Named<ClassSelection::Kind> kClassSelections[] = {{"auto", ClassSelection::Kind::Auto},
                                                                   {"all", ClassSelection::Kind::All}};

inline constexpr Named<Priors::Kind> kPriors[] = {{"equal", Priors::Kind::Equal}, {"size", Priors::Kind::Size}};

inline constexpr Named<ClusterMethod> kClusterMethods[] = {{"hierarchical", ClusterMethod::Hierarchical},
                                                           {"kmeans", ClusterMethod::KMeans},
                                                           {"neighbours", ClusterMethod::Neighbours},
                                                           {"neighbors", ClusterMethod::Neighbours, true}};

inline constexpr Named<Distance> kDistances[] = {{"euclidean", Distance::Euclidean}, {"tanimoto", Distance::Tanimoto}};

inline constexpr Named<Linkage> kLinkages[] = {{"ward", Linkage::Ward},
                                               {"average", Linkage::Average},
                                               {"complete", Linkage::Complete},
                                               {"single", Linkage::Single}};

inline constexpr Named<char> kDelimiters[] = {
    {"comma", ','}, {"semicolon", ';'}, {"tab", '\t'}, {"\\t", '\t', true}, {"pipe", '|'},
};

inline constexpr Named<char> kDecimals[] = {{"point", '.'}, {".", '.', true}, {"comma", ','}, {",", ',', true}};

inline constexpr Named<When> kProgressChoices[] = {
    {"auto", When::Auto}, {"always", When::Always}, {"never", When::Never}, {"json", When::Json}};

inline constexpr Named<When> kColorChoices[] = {{"auto", When::Auto}, {"always", When::Always}, {"never", When::Never}};

template <class Value, std::size_t n>
std::vector<std::string> namesOf(const Named<Value> (&choices)[n]) {
  std::vector<std::string> names;
  for (const auto& choice : choices)
    if (!choice.synonym) names.emplace_back(choice.name);
  return names;
}

template <class Value, std::size_t n>
std::string nameOf(const Named<Value> (&choices)[n], Value value) {
  for (const auto& choice : choices)
    if (choice.value == value) return std::string(choice.name);
  return "?";
}

}  // namespace studystats::cli
