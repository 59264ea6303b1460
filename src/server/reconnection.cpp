#include "server/reconnection.h"

#include <algorithm>
#include <utility>

namespace server {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kFirstPause = 500ms;
constexpr std::chrono::milliseconds kLongestPause = 30s;

}  // namespace

bool Reconnection::ready() {
  if (!lost_) {
    if (document_.connected()) return true;
    lost_ = true;
    pause_ = kFirstPause;
    nextTry_ = Clock::now();
    say_(base::Priority::Error, document_.app().language().Translate("IDS_CONNECTION_LOST"));
  }
  if (Clock::now() < nextTry_) return false;
  if (!document_.reconnect()) {
    // Twice before each pause: what takes more than a moment to connect is there at the second look.
    nextTry_ = Clock::now() + (lookedAgain_ ? pause_ : kFirstPause);
    if (lookedAgain_) pause_ = std::min(pause_ * 2, kLongestPause);
    lookedAgain_ = !lookedAgain_;
    return false;
  }
  lost_ = lookedAgain_ = false;
  back_ = true;
  say_(base::Priority::Notice, document_.app().language().Translate("IDS_CONNECTION_BACK"));
  return true;
}

bool Reconnection::takeBack() {
  return std::exchange(back_, false);
}

}  // namespace server
