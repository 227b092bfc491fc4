"""What travels between the app and the service, to the byte."""

from customer import DASHBOARD, EMAIL, PASSWORD
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


@story
def one_post_whatever_happens(stage):
    answers = [None, b"garbage", b"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{", b"HTTP/1.1 200 OK\r\n"]
    with stage.scripted(lambda request: answers[(len(server.posts()) - 1) % len(answers)]) as (phone, server):
        phone.type(EMAIL, "a@x")
        phone.type(PASSWORD, "b")
        for _ in range(2 * len(answers)):
            phone.one_more(server.posts, phone.press, "Iniciar Sesión")
            phone.find("Error de credenciales")
        # A further, good one: whatever might have been sent again has come by now.
        answers[:] = [reply('{"status":"error","message":"Fin"}')]
        phone.send({}, "Iniciar Sesión", "Fin")
        assert len(server.posts()) == 9, len(server.posts())


@story
def infinite_weight(stage):
    with stage.scripted(lambda request: reply('{"status":"success","id":"42"}')) as (phone, server):
        phone.sign_in(("a@x", "b"), DASHBOARD)
        phone.enter("Cotizar")
        phone.send({"Peso (Lbs)": "inf"}, "Enviar Cotización", "Enviado con éxito")
        post = server.posts()[-1]
        assert post.line == "POST /api_cotizar.php HTTP/1.1" and post.body == b"", (post.line, post.body)
        assert post.header("Content-Length") == "0" and post.header("Content-Type") == "application/json"
