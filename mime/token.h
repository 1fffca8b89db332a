// Tokens of MIME header fields (RFC 2045 section 5.1).
//
// Kept: a token may hold spaces and bytes above 127; a message id is not looked into.
#ifndef VEL_MIME_TOKEN_H
#define VEL_MIME_TOKEN_H

// 1 when the text is not empty and holds neither control characters nor tspecials.
int IsValidToken(const char* text);

// The same for a parameter value, which may be empty when [Options]
// AcceptBlankValueInContentTypeParm is "YES".
int IsValidTokenValue(const char* text);

// 1 when the text begins with "<", ends with ">" and holds no control character.
int IsValidMsgId(const char* text);

#endif
