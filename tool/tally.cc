#include "tally.h"

namespace qel::tool {

Finding& Finding::operator+=(const Finding& later) {
  if (count == 0 && later.count > 0) {
    firstPlace = later.firstPlace;
    first = later.first;
  }
  count += later.count;
  return *this;
}

Tally& Tally::operator+=(const Tally& later) {
  read += later.read;
  rejected += later.rejected;
  unreadableDates += later.unreadableDates;
  zeroLineItems += later.zeroLineItems;
  return *this;
}

}  // namespace qel::tool
