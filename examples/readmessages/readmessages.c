/*
 * readmessages: reads an EDIFACT interchange message by message with libedi
 * and prints, for each message, its number, UNH reference, type and number
 * of segments; then every finding of the read.  Exit 0 when the whole file
 * was read, 1 when it failed, 2 on a usage error.
 *
 *   readmessages FILE      ("-" reads standard input)
 */
#include <stdio.h>
#include <string.h>

#include <edi.h>

int main(int argc, char **argv)
{
    if (argc != 2) {
        fprintf(stderr, "usage: readmessages FILE\n");
        return 2;
    }
    edi_options opt;
    edi_options_init(&opt);
    edi_reader *reader = strcmp(argv[1], "-") == 0 ? edi_open_fd(0, "stdin", &opt)
                                                   : edi_open_path(argv[1], &opt);
    if (reader == NULL) {
        fprintf(stderr, "readmessages: out of memory\n");
        return 1;
    }

    edi_message *msg;
    int rc;
    while ((rc = edi_next(reader, &msg)) == 1) {
        const edi_envelope *env = edi_message_envelope(msg);
        printf("%d\t%s\t%s\t%zu\t%s\n", edi_message_number(msg), edi_message_reference(msg),
               edi_message_type(msg), edi_message_segments(msg), env->sender);
        edi_message_free(msg);
    }

    /* The findings of the input: what was changed, left out, or why it failed. */
    for (size_t i = 0; i < edi_reader_finding_count(reader); i++) {
        const edi_finding *f = edi_reader_finding(reader, i);
        if (f->verbose != 1)
            fprintf(stderr, "%s%s%s\n", f->file, f->file[0] ? ": " : "", f->text);
    }
    edi_close(reader);
    return rc == 0 ? 0 : 1;
}
