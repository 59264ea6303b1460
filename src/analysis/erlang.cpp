#include "analysis/erlang.h"

namespace analysis {

namespace {

// The loss with one line more, from the one before; the form that does not overflow.
double withOneMore(double erlang, int lines, double loss) {
  return erlang * loss / (lines + erlang * loss);
}

}  // namespace

double erlangLoss(double erlang, int lines) {
  double loss = 1;
  for (int line = 1; line <= lines; ++line) loss = withOneMore(erlang, line, loss);
  return loss;
}

int linesForLoss(double erlang, double loss) {
  if (erlang <= 0) return 0;
  int lines = 0;
  for (double now = 1; now > loss; now = withOneMore(erlang, lines, now)) ++lines;
  return lines;
}

}  // namespace analysis
