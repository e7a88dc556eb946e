// Several exposures of one scene become one: long ones for what is dark, short ones for what is bright.
#pragma once

#include "decode.h"

namespace fringix::scan {

// Takes over the pixels that another exposure shows better: one that gives a point goes before one that does not, one that is only too
// dark before one that is too bright, and of equals the one whose column has the smaller variance, which is the longest that does not
// saturate. Where two exposures give columns that contradict each other something moved in between.
void takeBetter(const DecodedStrip& other, DecodedStrip& kept);

}  // namespace fringix::scan
