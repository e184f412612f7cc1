#include "cli/command_line.h"

int main(int count, char** arguments) {
    return kelb::cli::runKelb(count, arguments);
}
