/* qtractor does not start without the kernel's MIDI sequencer, which containers and build servers do not have. Loaded
   before libasound, this stands in for it: a sequencer that exists and to which nothing ever happens. */
#include <errno.h>
#include <poll.h>
#include <unistd.h>

static int anything;
static int silence[2] = {-1, -1};

int snd_seq_open(void** handle, const char* name, int streams, int mode) {
    (void)name, (void)streams, (void)mode;
    if (silence[0] < 0 && pipe(silence) != 0) return -errno;
    *handle = &anything;
    return 0;
}
int snd_seq_poll_descriptors_count(void* handle, short events) {
    (void)handle, (void)events;
    return 1;
}
int snd_seq_poll_descriptors(void* handle, struct pollfd* fds, unsigned space, short events) {
    (void)handle, (void)space, (void)events;
    fds->fd = silence[0];
    fds->events = POLLIN;
    return 1;
}
int snd_seq_client_id(void* handle) {
    (void)handle;
    return 128;
}
int snd_seq_event_input(void* handle, void** event) {
    (void)handle, (void)event;
    return -EAGAIN;
}

#define NOTHING(name, result) \
    int name(void) { return result; }
NOTHING(snd_seq_close, 0)
NOTHING(snd_seq_alloc_queue, 0)
NOTHING(snd_seq_free_queue, 0)
NOTHING(snd_seq_control_queue, 0)
NOTHING(snd_seq_create_simple_port, 0)
NOTHING(snd_seq_delete_simple_port, 0)
NOTHING(snd_seq_drain_output, 0)
NOTHING(snd_seq_drop_input, 0)
NOTHING(snd_seq_drop_output, 0)
NOTHING(snd_seq_event_input_pending, 0)
NOTHING(snd_seq_event_output, 0)
NOTHING(snd_seq_event_output_direct, 0)
NOTHING(snd_seq_free_event, 0)
NOTHING(snd_seq_get_any_client_info, -ENOENT)
NOTHING(snd_seq_get_any_port_info, -ENOENT)
NOTHING(snd_seq_get_port_info, 0)
NOTHING(snd_seq_get_queue_status, 0)
NOTHING(snd_seq_get_queue_tempo, 0)
NOTHING(snd_seq_query_next_client, -ENOENT)
NOTHING(snd_seq_query_next_port, -ENOENT)
NOTHING(snd_seq_query_port_subscribers, -ENOENT)
NOTHING(snd_seq_remove_events, 0)
NOTHING(snd_seq_set_client_name, 0)
NOTHING(snd_seq_set_port_info, 0)
NOTHING(snd_seq_set_queue_tempo, 0)
NOTHING(snd_seq_set_queue_timer, 0)
NOTHING(snd_seq_subscribe_port, 0)
NOTHING(snd_seq_unsubscribe_port, 0)
