"""Stories of what travels between the app and the service."""

import contextlib

from phone import Phone
from scripted import ScriptedServer, reply
from stage import open_at_login, sign_in, story


@story
def bytes_on_the_wire(stage):
    def script(request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42","nombre":"Ana"}', headers="Set-Cookie: a=b; Path=/\r\n")
        return reply('{"paquetes":[{"tracking":"T1"}]}', status="500 Oops", headers="Set-Cookie: c=d\r\n")

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        sign_in(phone, ("ana/n@x", 'a"b\\c'))
        phone.find("1 Paquetes")
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
            assert request.header("Host") == "127.0.0.1:18473"
            assert request.header("User-Agent") == "Mozilla/5.0", request.header("User-Agent")


@story
def one_post_whatever_happens(stage):
    answers = [None, b"garbage", b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{", b"HTTP/1.1 200 OK\r\n"]
    server = ScriptedServer(18473, lambda request: answers[(len(server.posts()) - 1) % len(answers)])
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        phone.type("Correo Electrónico", "a@x")
        phone.type("Contraseña", "b")
        for count in range(1, 2 * len(answers) + 1):
            phone.press("Iniciar Sesión")
            phone.wait_for(lambda: len(server.posts()) >= count, "the request")
            phone.find("Error de credenciales")
        # A further, good one: whatever might have been sent again has come by now.
        answers[:] = [reply('{"status":"error","message":"Fin"}')]
        phone.press("Iniciar Sesión")
        phone.find("Fin")
        assert len(server.posts()) == 9, len(server.posts())
        assert phone.standard_error() == "", phone.standard_error()


@story
def infinite_weight(stage):
    def script(request):
        if request.line.startswith("POST /api_login.php"):
            return reply('{"status":"success","id":"42"}')
        return reply('{"status":"success"}')

    server = ScriptedServer(18473, script)
    with contextlib.closing(server), Phone() as phone:
        open_at_login(phone, stage.scripted_app)
        sign_in(phone, ("a@x", "b"))
        phone.press("Cotizar")
        phone.type("Peso (Lbs)", "inf")
        phone.press("Enviar Cotización")
        phone.find("Enviado con éxito")
        post = server.posts()[-1]
        assert post.line == "POST /api_cotizar.php HTTP/1.1" and post.body == b"", (post.line, post.body)
        assert post.header("Content-Length") == "0" and post.header("Content-Type") == "application/json"
