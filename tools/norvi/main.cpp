#include "norvi/tool.h"

int main(int argc, char** argv) {
    return norvi::RunTool(argc, argv);
}
