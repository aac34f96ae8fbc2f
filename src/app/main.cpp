#include <cstdio>

int main() {
  std::puts("Twin Lanes: the playable build is on its way; run the tests with `make test`.");
  return 0;
}
