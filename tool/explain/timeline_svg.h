// The timeline of a receipt as SVG: time to the right, a lane for each product.

#ifndef QEL_TOOL_EXPLAIN_TIMELINE_SVG_H_
#define QEL_TOOL_EXPLAIN_TIMELINE_SVG_H_

#include <string>
#include <string_view>

#include "explain/explanation.h"

namespace qel::tool {

// Returns the shapes that timelines refer to. A page has them once, before the first timeline.
std::string_view timelineShapes();

// Returns the timeline as an svg element, or nothing if the receipt has no entries. It is as wide
// as what it is in: horizontal positions are percentages, so that its texts have one size on any
// screen. `name` is unique in the page; the ids of the elements begin with it.
std::string timelineSvg(const Explanation& explanation, std::string_view name);

}  // namespace qel::tool

#endif  // QEL_TOOL_EXPLAIN_TIMELINE_SVG_H_
