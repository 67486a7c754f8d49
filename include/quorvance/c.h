/* The library for hosts that speak C, or reach it through a foreign function interface: the one
   manager of the process, in plain functions. Everything that stands in quorvance_manager.h holds
   here too: every function may be called from any thread unless it says otherwise, returns without
   waiting for a network, a disk or a bus (quorvance_flush and quorvance_shutdown apart), and throws
   nothing. In a forked child of the host every
   function does nothing and answers QUORVANCE_UNAVAILABLE.

   Texts are UTF-8 and end in a zero byte; the library copies what it is given before it returns.
   Words are those that the server knows ("LOGIN", "APPROVED", "LOGIN_FORM", "CAMERA"), case
   included. */
#ifndef QUORVANCE_C_H
#define QUORVANCE_C_H

/* Screens, touches and motion stand in quorvance/c_screens.h. */

#include <stddef.h>
#include <stdint.h>

#pragma GCC visibility push(default)

#ifdef __cplusplus
extern "C" {
#endif

/** What a function answers. After anything but QUORVANCE_OK nothing has happened. After a shutdown,
   and while collection is off, what would send or store does nothing and answers QUORVANCE_OK. */
enum {
  QUORVANCE_OK = 0,
  /** A null pointer where a value is needed, a word or a number that is not in its list, a `size`
     that no version of the structure has. */
  QUORVANCE_INVALID_ARGUMENT = 1,
  /** No JSON object, or none that makes what the function wants. */
  QUORVANCE_INVALID_JSON = 2,
  /** The process's context is in use already. */
  QUORVANCE_TOO_LATE = 3,
  /** No memory, a forked child, or, for quorvance_setup, a shutdown before. */
  QUORVANCE_UNAVAILABLE = 4,
  /** Not in time; what was under way goes on. */
  QUORVANCE_TIMED_OUT = 5
};

/** The version that every request carries, "1.0.0". Never null, never freed. */
const char* quorvance_version(void);

/* --- before anything else ------------------------------------------------------------------------
 */

/** How the library is to run. Zero it, set `size` to sizeof(quorvance_options), set what differs:
   zero is every default. */
typedef struct quorvance_options {
  size_t size;
  /** Reverse-domain identifier of the application ("com.bank.app"); null stands for the
   * executable's name. */
  const char* application;
  /** The version that the application shows to its users; null when it has none. */
  const char* application_version;
  /** Where state and reports live; null means $XDG_DATA_HOME (or ~/.local/share) / application /
   * "quorvance". */
  const char* data_folder;
  /** Whether asking for the place and for permissions may start the services that answer. */
  int32_t may_start_services;
  /** Whether the application brings its own motion samples (quorvance_motion_sample); the sensors
     of the device are then left alone. */
  int32_t has_own_motion;
} quorvance_options;

/** Sets up the process's context. Once, before every function but the switches; without it the
   defaults hold.
    QUORVANCE_TOO_LATE when the context has been used. */
int quorvance_use_options(const quorvance_options* options);

/* --- the journey ---------------------------------------------------------------------------------
 */

/** Stores the server's URL, which must end in "/", and the user, and fetches the configuration. A
   null user changes nothing. QUORVANCE_INVALID_ARGUMENT for a null or empty URL. */
int quorvance_setup(const char* server_url, const char* user_id);
/** Asks the server for a device identifier now, and again 10 s after each failure. */
int quorvance_initialize_device_id(void);
/** Writes the stored device identifier ("no_device_id" until the server has sent one) and a zero
   byte into `buffer`, cut off where that ends. Answers the identifier's length without the zero
   byte, 0 when it cannot be had. A null buffer is for asking the length. */
size_t quorvance_device_id(char* buffer, size_t size);
/** Ends the user's session. */
int quorvance_logout(void);

/** The server's answer, or why there is none. Lives until the callback returns. */
typedef struct quorvance_verdict {
  /** Bytes that the library has filled: newer versions append members. */
  size_t size;
  /** "LOW", "MEDIUM", "HIGH", "VERY_HIGH", "expire", "undefined". */
  const char* level;
  /** The same as a number: 0 to 3, -2 for "expire", -1 for "undefined". */
  int32_t level_number;
  /** The status of the server's reply; 0 when none came. */
  int32_t http_status;
  /** The verdict signed by the server, "-1" when there is none. */
  const char* signed_risk;
  /** Under which the outcome is reported later; empty when no call was made. */
  const char* request_id;
  /** "answered", or why there is no answer: the names of VerdictReason (verdict.h). */
  const char* reason;
  /** From the call until the callback, in milliseconds. */
  int64_t elapsed_ms;
} quorvance_verdict;

/** Runs on a background thread of the library, which it must not keep. */
typedef void (*quorvance_verdict_callback)(const quorvance_verdict* verdict, void* context);

/** Reports the checkpoint and asks for a verdict. `check_point` is a JSON object with
   "checkpoint_type" and the keys of that kind, as the server receives them. After QUORVANCE_OK the
   callback runs exactly once, with `context`, also when no answer comes, and after `deadline_ms` at
   the latest (negative for none but the exchange's own); after anything else never. */
int quorvance_get_risk(const char* check_point, int64_t deadline_ms,
                       quorvance_verdict_callback callback, void* context);
/** Reports the checkpoint. */
int quorvance_arrive_to_check_point(const char* check_point);
/** Reports what became of the operation that a verdict was asked for: `type` is a checkpoint's
   word, `status` "APPROVED", "DENIED" or "CANCELLED". The transaction identifier may be null, and
   is dropped unless the type is "TRANSACTION". */
int quorvance_update_check_point_status(const char* type, const char* request_id,
                                        const char* status, const char* transaction_id);
/** Data about the user that the next payload carries once: a JSON object, or "null" to clear what
 * waits. */
int quorvance_set_pending_user_data(const char* user_data);
/** Records that the host asked its user for this permission ("CAMERA", "READ_CONTACTS", ...). */
int quorvance_on_request_access(const char* permission);

/* --- the end, and the switches --------------------------------------------------------------- */

/** Waits until what was accepted before has been answered or stored, at once when nothing is
   pending; as QuorvanceManager::flush. QUORVANCE_TIMED_OUT otherwise, inside a callback at once. */
int quorvance_flush(int64_t timeout_ms);
/** Accepts nothing from now on, and flushes. */
int quorvance_shutdown(int64_t timeout_ms);

/** The user's consent: while off (0) nothing is gathered, stored or sent, and verdicts come at once
   with the reason "collectionOff". On unless the host says otherwise, and not kept: set it first of
   all at each start. As QuorvanceManager::setCollectionEnabled. */
int quorvance_set_collection_enabled(int32_t on);
/** Forgets all that is stored, in memory at once and on the disk soon after; the next flush waits
   for it. As QuorvanceManager::eraseStoredData. */
int quorvance_erase_stored_data(void);

/* --- for developers ------------------------------------------------------------------------------
 */

/** Prints diagnostic lines to the console: 0 off, the default, anything else on. */
int quorvance_set_debug_mode(int32_t on);

#ifdef __cplusplus
}
#endif

#pragma GCC visibility pop

#endif
