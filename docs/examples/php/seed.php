<?php
// Creates two customers to try the app with: php seed.php. It is outside of public/, so that nobody runs it over the web.
require __DIR__ . '/endpoints.php';
$db = open_database();
if (run($db, "SELECT 1 FROM packages WHERE tracking = 'MRV-100001'", [])->fetch()) {
    exit("The customers exist already. Nothing was changed.\n");
}
$add = fn(string $name, string $email, string $password): int => add_customer($db, ['nombre' => $name, 'email' => $email,
    'password' => $password, 'direccion' => 'Calle 50', 'ciudad' => 'Panamá']);
$db->beginTransaction(); // Either everything is stored, or nothing.
$ana = $add('Ana Núñez', 'ana@marovenda.example', 'Casillero#1');
$bruno = $add('Bruno Díaz', 'bruno@marovenda.example', 'Casillero#2');
$packages = [[$bruno, 'MRV-200001', 'Filtro de aceite para camión pequeño', 'recibido', '-7 days'],
    [$bruno, 'MRV-200002', 'Mochila escolar y útiles', 'en tránsito', '-2 days']];
for ($i = 1; $i <= 230; $i++) { // MRV-100230 is the newest.
    $packages[] = [$ana, 'MRV-' . (100000 + $i), "Paquete de prueba $i", 'recibido', '-' . (231 - $i) . ' days'];
}
foreach ($packages as [$id, $tracking, $text, $state, $day]) {
    run($db, "INSERT INTO packages (customer_id, tracking, descripcion, estado, fecha_recibido)
        VALUES (:id, :tracking, :text, :state, DATE('now', :day))",
        ['id' => $id, 'tracking' => $tracking, 'text' => $text, 'state' => $state, 'day' => $day]);
}
foreach ([[$ana, 'Piñata de cumpleaños'], [$bruno, 'Motor fuera de borda']] as [$id, $text]) {
    request_quotation($db, ['user_id' => $id, 'tipo' => 'aereo', 'origen' => 'Miami, USA', 'destino' => 'Panamá',
        'peso' => 2.5, 'valor' => 40, 'descripcion' => $text]);
}
$db->commit();
echo "Created ana@marovenda.example and bruno@marovenda.example.\n";
