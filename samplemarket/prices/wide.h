// Products of two amounts, before they are divided.
#pragma once

namespace corvane::samplemarket {

__extension__ using Wide = __int128;

}  // namespace corvane::samplemarket
