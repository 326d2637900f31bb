// hdid [OPTION]... IMAGE: attaches a disk image.
#include "ToolMain.h"

int main(int argc, char **argv)
{
    return diskimages::runVerb("hdid", "attach", diskimages::attachVerb, {argv + 1, argv + argc});
}
