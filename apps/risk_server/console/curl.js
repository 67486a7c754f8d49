// A call as a command for the shell, which sends the same bytes again.

export const MAX_INLINE = 100_000;  // a longer body is better kept in a file

// POSIX: nothing is special between single quotes, and only the quote itself must leave them.
export function quote(text) {
  return "'" + text.replaceAll("'", "'\\''") + "'";
}

// A body that a command line can hold as it is: text without NUL, not too long.
export function isInline(bytes) {
  if (bytes.length > MAX_INLINE || bytes.includes(0)) return false;
  try {
    new TextDecoder('utf-8', {fatal: true, ignoreBOM: true}).decode(bytes);
    return true;
  } catch {
    return false;
  }
}

// `file` names the downloaded body where it is not inline. Slashes, dots and brackets of the path stay as they are.
export function curlCommand({baseUrl, path, method, contentType, body, file}) {
  const text = (bytes) => new TextDecoder('utf-8', {ignoreBOM: true}).decode(bytes);
  const parts = ['curl -sS -g --path-as-is -X ' + quote(method), quote(baseUrl.replace(/\/$/, '') + path),
                 '-H ' + quote(contentType ? 'Content-Type: ' + contentType : 'Content-Type:'),
                 isInline(body) ? '--data-raw ' + quote(text(body)) : '--data-binary ' + quote('@' + file)];
  return parts.join(' ');
}
