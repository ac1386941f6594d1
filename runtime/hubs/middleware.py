"""What every answer of a network has in common."""


def own_content_only(get_response):
    """Let pages use nothing but what comes from this server."""
    def middleware(request):
        response = get_response(request)
        response.setdefault("Content-Security-Policy", "default-src 'self'; base-uri 'none'; "
                            "form-action 'self'; frame-ancestors 'none'; object-src 'none'")
        return response
    return middleware


def headers_alone(get_response):
    """Leave out the body that a HEAD request did not ask for: some servers would send it."""
    def middleware(request):
        response = get_response(request)
        if request.method == "HEAD":
            if response.streaming:
                response.streaming_content = ()
            else:
                response.content = b""
        return response
    return middleware
