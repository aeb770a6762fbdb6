/* SPDX-License-Identifier: Apache-2.0 */
/* A program that needs the emulated host: it opens a device, asks it something and looks for the shell. With
   an argument it then writes behind the end of a block, which a sanitizer notices. */
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <unistd.h>

struct frame {
    uint32_t inLength, outLength;
    const void *in;
    void *out;
};

int main(int argc, char **argv) {
    char input[268] = {0};
    char output[128];
    struct frame frame = {sizeof input, sizeof output, input, output};
    int device = open("/dev/ipfix", O_RDWR | O_CLOEXEC);
    (void)argv;
    if (device < 0 || access("/bin/treesh", X_OK) != 0) {
        puts("no host");
        return 3;
    }
    /* No such command: the kernel says so, not a file. */
    puts(ioctl(device, 0x7777, &frame) == -1 ? "host" : "odd");
    close(device);
    if (argc > 1) {
        volatile char *block = malloc(8);
        block[8 * (argc - 1)] = 1;
        free((void *)block);
    }
    return 0;
}
