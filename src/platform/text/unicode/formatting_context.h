// Where a formatted text will stand, which in some languages decides on its capital letter.
#pragma once

namespace corvane {

enum class FormattingContext { unknown, standalone, beginningOfSentence, middleOfSentence };

}  // namespace corvane
