// A report before it takes one of its forms.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Place.h"
#include "ReportStyle.h"

namespace qztools {

// All texts are in their visible form.
struct Diagnosis {
    bool isWarning = false;
    const SourceText* text = nullptr;  // null where no text is to blame
    std::optional<Place> place{};      // in the text, where it is known
    vorn::ssize_t size = 0;            // of what is marked, in bytes; 0 where that is not known
    std::string message{};             // perhaps of several lines
    std::vector<std::string> context{};
    std::vector<std::string> hints{};
    std::string usage{};  // of a wrong call
};

// Both end with a line feed.
std::string FormatAsText(const SourceTexts& texts, const Diagnosis& diagnosis,
                         const ReportStyle& style);
std::string FormatAsJson(const SourceTexts& texts, const Diagnosis& diagnosis);

}  // namespace qztools
