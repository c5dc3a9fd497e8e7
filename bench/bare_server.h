#pragma once

/// A server with nothing behind it, as the service's but for what it does: each body is parsed and
/// answered with a few bytes. Says on standard output where it listens, and never returns.
void RunBareServer();
