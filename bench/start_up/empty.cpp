#include <iostream>

int main() {
  std::cout << "Please enter a choice : " << std::flush;
  return 0;
}
