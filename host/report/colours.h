// The colours of a report page: its style sheet has them from here, light and dark, its charts name the light ones.
//
// Hues after Okabe & Ito (2008), Color Universal Design: they differ for colour-blind eyes too. Shapes are the second
// channel.
#pragma once

#include <string>
#include <vector>

namespace studystats {

struct Colour {
  const char* name;  // of the style sheet's custom property: "--strong"
  const char* light;
  const char* dark;
};

inline constexpr Colour kPaper{"paper", "#ffffff", "#14171a"};
inline constexpr Colour kPanel{"panel", "#f5f7f9", "#1d2227"};
inline constexpr Colour kInk{"ink", "#1a1f24", "#e6e9ec"};
inline constexpr Colour kMuted{"muted", "#57606a", "#9ba5af"};
inline constexpr Colour kLine{"line", "#8a939c", "#737d87"};  // axes, limits, the 1:1 line
inline constexpr Colour kGrid{"grid", "#e3e7ea", "#2c3238"};
inline constexpr Colour kStrong{"strong", "#0072b2", "#56b4e9"};  // what was held out: figures that can be trusted
inline constexpr Colour kPale{"pale", "#b4c0cb", "#525e69"};      // what was fitted
inline constexpr Colour kOther{"other", "#d55e00", "#f28e41"};    // kept out and only predicted; below zero
inline constexpr Colour kWarning{"warning", "#8a5000", "#f0b747"};
inline constexpr Colour kWarningPanel{"warning-panel", "#fff4dc", "#322810"};
inline constexpr Colour kAlarm{"alarm", "#a1102a", "#ff8f98"};
inline constexpr Colour kAlarmPanel{"alarm-panel", "#ffecee", "#3a171c"};

// Classes and components: colour and shape of the i-th, beginning again after the last.
const Colour& groupColour(std::size_t i);
const char* groupShape(std::size_t i);

// The style sheet's custom properties, for light, dark and printed pages.
std::string colourRules();

// JSON: {"#0072b2": "strong", ...}, by which a page replaces the colours of its charts by custom properties.
std::string colourNames();

}  // namespace studystats
