/* Built as C11 with every warning an error: the C interface needs no C++. */
#include "capi/tallowen.h"

#include <stdio.h>
#include <string.h>

static int failures = 0;

static void expect(int condition, const char *what) {
    if (!condition) {
        fprintf(stderr, "PlainCCheck: %s\n", what);
        ++failures;
    }
}

int main(void) {
    tw_scheduler *scheduler = tw_scheduler_create();
    expect(tw_scheduler_start(scheduler, 100.0), "the first start requests an import");
    expect(tw_scheduler_tick(scheduler, 100.0 + tw_scheduler_interval_seconds()), "a firing after one interval");
    tw_scheduler_free(scheduler);

    char *watched = tw_activity_watched_bundle_identifiers();
    expect(watched != NULL && strstr(watched, "\"com.openai.chat\"") != NULL, "the watched applications as JSON");
    tw_string_free(watched);
    return failures == 0 ? 0 : 1;
}
