/* Screens, touches and motion samples for hosts that speak C; see quorvance/c.h. */
#ifndef QUORVANCE_C_SCREENS_H
#define QUORVANCE_C_SCREENS_H

#include "quorvance/c.h"

#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#endif

/** A view and what is in it, as it stands at the moment of the call. In points, in the parent's
 * coordinates. */
typedef struct quorvance_view {
  double x;
  double y;
  double width;
  double height;
  /** 0 for none: direct subviews of the root are then given one. */
  int64_t tag;
  /** For debug output; null for none. */
  const char* description;
  const struct quorvance_view* subviews;
  size_t subview_count;
} quorvance_view;

/** Views deeper in the root than this are not looked at. */
#define QUORVANCE_VIEW_DEPTH 64
/** Of so many views below the root the rest is not looked at. */
#define QUORVANCE_VIEW_COUNT 10000

/** One finger on the glass: pressure (1 is an average touch, 0 where it is not told), and half of
   the contact ellipse's longer axis in points. */
typedef struct quorvance_touch {
  double force;
  double major_radius;
} quorvance_touch;

/** The states of a gesture: a finger put down, each move, the last one lifted, a touch that the
 * system takes over. */
enum {
  QUORVANCE_GESTURE_BEGAN = 1,
  QUORVANCE_GESTURE_CHANGED = 2,
  QUORVANCE_GESTURE_ENDED = 3,
  QUORVANCE_GESTURE_CANCELLED = 4
};

typedef struct quorvance_screen quorvance_screen;

/** Watches a screen: touches are recorded, and motion while a finger is down, as far as the
   server's configuration asks for it. `type` is a screen's word ("LOGIN_FORM", ...). Null for an
   unknown word, a null view, or without memory. What is given back belongs to the caller, who ends
   it with quorvance_screen_finish() and quorvance_screen_release(). The host's main thread only, as
   are all functions of a screen. */
quorvance_screen* quorvance_screen_start(const char* type, int64_t action_id,
                                         const quorvance_view* root);
/** The views as they stand from now on. A subview without a tag keeps the one that was given at its
 * place. */
int quorvance_screen_set_views(quorvance_screen* screen, const quorvance_view* root);
/** One event of the touch panel: all fingers on the glass, the first one first, and the place of
   the gesture in the root view's coordinates. */
int quorvance_screen_touch(quorvance_screen* screen, int32_t gesture, double x, double y,
                           const quorvance_touch* touches, size_t touch_count);
/** Starts and stops the sampling of motion by hand. */
int quorvance_screen_resume(quorvance_screen* screen);
int quorvance_screen_pause(quorvance_screen* screen);
/** Sends what was captured. A second call sends all of it again. */
int quorvance_screen_finish(quorvance_screen* screen);
/** Lets go of the screen, finished or not; what was not finished is not sent. Null does nothing. */
void quorvance_screen_release(quorvance_screen* screen);

/** The sensors that motion samples come from, in the axes of the device. */
enum {
  /** In g, gravity included. */
  QUORVANCE_SENSOR_ACCELEROMETER = 0,
  /** Gravity alone, in g. */
  QUORVANCE_SENSOR_DEVICE_MOTION = 1,
  /** In radians per second. */
  QUORVANCE_SENSOR_GYROSCOPE = 2,
  /** In microtesla. */
  QUORVANCE_SENSOR_MAGNETOMETER = 3
};

/** One reading of the application's own, for every screen that samples this sensor now; without one
   it is dropped, as is a value that is not finite. Without `has_own_motion` an
   invalid argument. Any thread. */
int quorvance_motion_sample(int32_t sensor, double x, double y, double z);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#endif
