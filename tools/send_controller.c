// Sends one control change to a MIDI input of a JACK server, as the knob of a controller does.
// usage: send_controller PORT CONTROLLER VALUE

#include <jack/jack.h>
#include <jack/midiport.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static jack_port_t* port;
static unsigned char message[3] = {0xB0, 0, 0};
static atomic_int waiting;

static int process(jack_nframes_t frames, void* unused) {
    (void)unused;
    void* buffer = jack_port_get_buffer(port, frames);
    jack_midi_clear_buffer(buffer);
    if (atomic_exchange(&waiting, 0)) jack_midi_event_write(buffer, 0, message, sizeof message);
    return 0;
}

int main(int argc, char** argv) {
    if (argc != 4) return fprintf(stderr, "usage: send_controller PORT CONTROLLER VALUE\n"), 2;
    message[1] = (unsigned char)atoi(argv[2]);
    message[2] = (unsigned char)atoi(argv[3]);
    jack_client_t* client = jack_client_open("controller", JackNoStartServer, NULL);
    if (!client) return fprintf(stderr, "no JACK server\n"), 1;
    port = jack_port_register(client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    jack_set_process_callback(client, process, NULL);
    if (!port || jack_activate(client) || jack_connect(client, jack_port_name(port), argv[1]))
        return fprintf(stderr, "cannot connect to %s\n", argv[1]), 1;
    atomic_store(&waiting, 1);
    usleep(300000);  // for what is played to arrive before the connection goes
    jack_client_close(client);
    return 0;
}
