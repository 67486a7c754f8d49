/* consumer URL FOLDER: what a host in C does: a verdict, its outcome, a screen with touches and
   motion; and what the library refuses. Prints a line for the verdict; a check that fails says so
   and ends the program with 1. */
#include <pthread.h>
#include <quorvance/c_screens.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static const char kLogin[] = "{\"checkpoint_type\":\"LOGIN\",\"user\":{\"user_id\":\"user-17\"}}";
static const int64_t kPatienceMs = 20000;

struct answer {
  pthread_mutex_t mutex;
  pthread_cond_t came;
  int count;
  char request_id[128];
};

static void check(int holds, const char* what) {
  if (holds) return;
  fprintf(stderr, "consumer: %s\n", what);
  exit(1);
}

static void on_verdict(const quorvance_verdict* verdict, void* context) {
  struct answer* answer = context;
  printf("%s, %s\n", verdict->level, verdict->reason);
  pthread_mutex_lock(&answer->mutex);
  snprintf(answer->request_id, sizeof answer->request_id, "%s", verdict->request_id);
  ++answer->count;
  pthread_cond_signal(&answer->came);
  pthread_mutex_unlock(&answer->mutex);
}

static void use_options(const char* folder) {
  quorvance_options options;
  memset(&options, 0, sizeof options);
  check(quorvance_use_options(&options) == QUORVANCE_INVALID_ARGUMENT, "options without a size");
  options.size = sizeof options;
  options.application = "com.bank.plain";
  options.data_folder = folder;
  options.has_own_motion = 1;
  check(quorvance_use_options(&options) == QUORVANCE_OK, "options");
}

static void ask_for_verdict(struct answer* answer) {
  check(quorvance_get_risk(kLogin, -1, on_verdict, answer) == QUORVANCE_OK, "a verdict");
  pthread_mutex_lock(&answer->mutex);
  while (answer->count == 0) pthread_cond_wait(&answer->came, &answer->mutex);
  pthread_mutex_unlock(&answer->mutex);
  check(quorvance_update_check_point_status("LOGIN", answer->request_id, "APPROVED", NULL) ==
            QUORVANCE_OK,
        "an outcome");
}

static void show_screen(void) {
  const quorvance_view button = {.x = 10, .y = 20, .width = 100, .height = 40};
  const quorvance_view root = {
      .width = 300, .height = 200, .subviews = &button, .subview_count = 1};
  const quorvance_touch finger = {.force = 1, .major_radius = 4};
  quorvance_screen* screen = quorvance_screen_start("LOGIN_FORM", 7, &root);
  check(screen != NULL, "a screen");
  for (int state = QUORVANCE_GESTURE_BEGAN; state <= QUORVANCE_GESTURE_ENDED; ++state) {
    check(quorvance_screen_touch(screen, state, 15, 25, &finger, 1) == QUORVANCE_OK, "a touch");
    check(quorvance_motion_sample(QUORVANCE_SENSOR_ACCELEROMETER, 0, 0, -1) == QUORVANCE_OK,
          "a motion sample");
    check(quorvance_screen_set_views(screen, &root) == QUORVANCE_OK, "views");
  }
  check(quorvance_screen_finish(screen) == QUORVANCE_OK, "the end of a screen");
  check(quorvance_flush(kPatienceMs) == QUORVANCE_OK, "a flush");
  quorvance_screen_release(screen);
}

static void check_refusals(struct answer* answer) {
  const quorvance_view root = {.width = 1, .height = 1};
  const quorvance_options late = {.size = sizeof late};
  check(quorvance_use_options(&late) == QUORVANCE_TOO_LATE, "late options");
  check(quorvance_setup("", NULL) == QUORVANCE_INVALID_ARGUMENT, "an empty URL");
  check(quorvance_get_risk(kLogin, -1, NULL, NULL) == QUORVANCE_INVALID_ARGUMENT, "no callback");
  check(quorvance_get_risk("{", -1, on_verdict, answer) == QUORVANCE_INVALID_JSON, "no JSON");
  check(
      quorvance_arrive_to_check_point("{\"checkpoint_type\":\"Login\"}") == QUORVANCE_INVALID_JSON,
      "an unknown type");
  check(quorvance_update_check_point_status("LOGIN", "r", "approved", NULL) ==
            QUORVANCE_INVALID_ARGUMENT,
        "an unknown status");
  check(quorvance_screen_start("login", 1, &root) == NULL, "an unknown screen");
  check(quorvance_screen_finish(NULL) == QUORVANCE_INVALID_ARGUMENT, "no screen");
  check(quorvance_motion_sample(4, 0, 0, 0) == QUORVANCE_INVALID_ARGUMENT, "an unknown sensor");
  check(quorvance_on_request_access("CAMERA") == QUORVANCE_OK, "a permission");
  check(quorvance_on_request_access("camera") == QUORVANCE_INVALID_ARGUMENT, "no permission");
  check(quorvance_set_pending_user_data("[]") == QUORVANCE_INVALID_JSON, "no object");
  check(quorvance_set_pending_user_data("{\"contacts\":1}") == QUORVANCE_OK, "user data");
}

int main(int count, char** arguments) {
  static struct answer answer = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0, ""};
  char identifier[8];
  check(count == 3, "consumer URL FOLDER");
  use_options(arguments[2]);
  check(quorvance_setup(arguments[1], "user-17") == QUORVANCE_OK, "setup");
  check(quorvance_flush(kPatienceMs) == QUORVANCE_OK, "a flush");
  check(quorvance_device_id(identifier, sizeof identifier) == strlen("no_device_id"), "a length");
  check(strcmp(identifier, "no_devi") == 0, "what fits into a buffer");
  check(quorvance_initialize_device_id() == QUORVANCE_OK, "a device identifier");
  ask_for_verdict(&answer);
  show_screen();
  check_refusals(&answer);
  check(quorvance_logout() == QUORVANCE_OK, "a logout");
  check(quorvance_shutdown(kPatienceMs) == QUORVANCE_OK, "a shutdown");
  check(answer.count == 1, "one answer to one question");
  return 0;
}
