// motordash-imgconv: PNG pictures to constant image records.
#include "imgconv.h"

int main(int argc, char** argv)
{
    return imgconv_main(argc, argv);
}
