// Answers each line that names a calendar file with the number of libical's complaints about it. A
// file that is gone has none. See written_files.py.
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "tests/support/libical_complaints.h"

int main() {
  for (std::string path; std::getline(std::cin, path);) {
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    std::cout << (file ? tidemark::local::complaintsOfLibical(text) : 0) << std::endl;
  }
}
