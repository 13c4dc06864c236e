// A console program that opens a workspace, edits it and saves it, until it is killed. On the
// standard output it tells what it has done: "open", "edit" or "saving" with a digest, "saved".
//
//     workspace_editor <package> <folder for the working directory> <seed>

#include <cstdlib>
#include <iostream>

#include "storage/editing_session.h"

int main(int argumentCount, char** arguments) {
  if (argumentCount != 4) {
    return 2;
  }
  try {
    corvane::testing::EditingSession session(arguments[1], arguments[2],
                                             std::strtoull(arguments[3], nullptr, 10));
    std::cout << "open " << session.currentDigest() << std::endl;
    while (true) {
      std::cout << "edit " << session.edit() << std::endl;
      if (session.wantsToSave()) {
        std::cout << "saving " << session.currentDigest() << std::endl;
        session.save();
        std::cout << "saved" << std::endl;
      }
    }
  } catch (const corvane::Error& error) {
    std::cout << "failed " << error << std::endl;
    return 1;
  }
}
