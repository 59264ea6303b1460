#include "ctl/run.h"

int main(int count, char** words) {
  return ctl::run(count, words);
}
