// Reads Server-Sent Events from the pieces of a stream. An event counts when its empty line has come: of a stream that is
// cut in the middle of one nothing is handed on, and the reader asks again from the event before.

export class EventReader {
  constructor(onEvent) {
    this.onEvent = onEvent;
    this.decoder = new TextDecoder();
    this.rest = '';
    this.begin();
  }

  begin() {
    this.event = {name: 'message', id: undefined, data: []};
  }

  // Takes some bytes; a character may be cut between two pieces.
  push(bytes) {
    const lines = (this.rest + this.decoder.decode(bytes, {stream: true})).split('\n');
    this.rest = lines.pop();
    for (const line of lines) this.takeLine(line.endsWith('\r') ? line.slice(0, -1) : line);
  }

  takeLine(line) {
    if (line === '') {
      const {name, id, data} = this.event;
      if (data.length > 0) this.onEvent({name, id, data: data.join('\n')});
      this.begin();
      return;
    }
    const colon = line.indexOf(':');
    if (colon === 0) return;  // a comment
    const field = colon < 0 ? line : line.slice(0, colon);
    const value = colon < 0 ? '' : line.slice(colon + 1).replace(/^ /, '');
    if (field === 'event') this.event.name = value;
    if (field === 'id') this.event.id = value;
    if (field === 'data') this.event.data.push(value);
  }
}
