#include "ctl/access.h"

#include "base/printf.h"

namespace ctl {

std::string rightText(const security::AccessRight& right) {
  for (const RightWord& known : kRightWords) {
    if (known.right == right) return std::string(known.word);
  }
  return base::format("%d;%d", right.object, right.right);
}

}  // namespace ctl
