#include "app/program.h"

int main(int argumentCount, char** arguments) {
  return Hovar::RunProgram(argumentCount, arguments);
}
