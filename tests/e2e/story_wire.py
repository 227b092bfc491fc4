"""What travels between the app and the service, to the byte."""

from scripted import SCRIPTED_PORT, reply
from stage import story


@story
def bytes_on_the_wire(stage):
    def script(request):
        if request.method == "POST":
            return reply('{"status":"success","id":"42","nombre":"Ana"}', headers="Set-Cookie: a=b; Path=/\r\n")
        return reply('{"paquetes":[{"tracking":"T1"}]}', status="500 Oops", headers="Set-Cookie: c=d\r\n")

    with stage.scripted(script) as (phone, server):
        phone.sign_in(("ana/n@x", 'a"b\\c'), "1 Paquetes")
        post, get = server.requests[:2]
        assert post.line == "POST /api_login.php HTTP/1.1", post.line
        assert post.body == r'{"email":"ana\/n@x","password":"a\"b\\c"}'.encode(), post.body
        assert post.header("Content-Type") == "application/json", post.headers
        assert post.header("Content-Length") == str(len(post.body))
        assert get.line == "GET /api_paquetes.php?user_id=42 HTTP/1.1", get.line
        assert get.body == b"" and get.header("Content-Type") is None, get.headers
        # Beyond those of the call only what the platform's client sends of itself.
        platform = {"host", "connection", "accept-encoding", "accept-language", "user-agent"}
        for request, own in ((post, {"content-type", "content-length"}), (get, set())):
            names = {name.lower() for name, _ in request.headers}
            assert names <= platform | own, names
            assert request.header("Host") == f"127.0.0.1:{SCRIPTED_PORT}"
            assert request.header("User-Agent") == "Mozilla/5.0", request.header("User-Agent")
