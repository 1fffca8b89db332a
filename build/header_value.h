// Values of header fields: one address, one MIME parameter.
#ifndef VEL_BUILD_HEADER_VALUE_H
#define VEL_BUILD_HEADER_VALUE_H

// Returns an address as a header carries it, malloc'ed: a recipient's with a host and a domain where it has none,
// any with encoded words, by way of JIS when asked for. Null for null and without memory.
char* processAddress(const char* address, int is_sender, int jis);

// Returns "attribute=value" as attribute="value", malloc'ed: the value without the quotes that it has, escaped
// (RFC 822 section 3.3), with encoded words. Null for null, for a text without "=", and without memory.
char* process_param(const char* parameter);

#endif
