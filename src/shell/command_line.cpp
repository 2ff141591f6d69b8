// The command line: every option is accepted, only -h/--help does
// something (the usage text), and no option ever starts the screen.
#include <getopt.h>

#include <cstdlib>

#include "shell/start_up.h"

static struct option sg_astLongOpt[] = {{"help", no_argument, NULL, 'h'}, {0, 0, 0, 0}};

void print_usage(FILE* stream, char* progName, int status) {
    (void)progName;
    fputs("[start or stop norvane service]:\n", stream);
    fputs("service norvane start|stop\n\n", stream);
    fputs("[change the language nvui show]:\n", stream);
    fputs("nvcmd lang en\n", stream);
    fputs("nvcmd lang chutf8\n", stream);
    fputs("nvcmd lang chgb2312\n", stream);
    exit(status);
}

int GetMyOpt(int argc, char** argv, std::string& sReserved1, std::string& sReserved2) {
    (void)sReserved1;
    (void)sReserved2;
    int iOpt;
    while ((iOpt = getopt_long(argc, argv, "hck:f:s:", sg_astLongOpt, NULL)) != -1) {
        if (iOpt == 'h')
            print_usage(stdout, argv[0], 0);
    }
    return 0;
}
